// Known cell: finds the orientation of a crystal whose cell is known.
#pragma once

#include "lattice/latticefit.h"
#include "records/cellparameters.h"

#include <functional>
#include <optional>

namespace tessera {

/// Tolerances of the search for an orientation.
struct KnownCellOptions {
    double dfLengthTolerance = 0.05;  ///< of lengths, as a share, which allows for an error of the scale
    double dfAngleTolerance = 3;      ///< degrees
    double dfTolerance = g_dfLatticeTolerance;  ///< of an index
    /// Share of the points to be explained beyond chance; wrong cells reach 0.1 easily.
    double dfLeastShare = 0.15;
};

/// An orientation that was found.
struct KnownCellOrientation {
    LatticeBasis matRotated = LatticeBasis::Identity();  ///< the known cell, rotated
    /// The same edges, fitted to the points without constraints.
    LatticeBasis matRefined = LatticeBasis::Identity();
    double dfScale = 1;     ///< factor of the known lengths that fits best, with fixed angles
    LatticeFit fitRotated;  ///< of the rotated cell to all points
    LatticeFit fitScaled;   ///< of the rotated cell times the scale
    LatticeFit fitRefined;  ///< of the refined cell
};

/// The basis of a cell: a along x, b in the plane of x and y, right-handed.
/// @return nothing for numbers that make no cell, and for edges below 0.5 or above 2000 Å
std::optional<LatticeBasis> basisOfCell(const CellParameters& cell);

/// Finds the rotation of the cell that explains most points within the tolerances.
///
/// For each direction of a hemisphere, the projections of the points are tested for the period that one of
/// the three shortest edges would give. The best directions are refined and paired by their angle, and each
/// pair is a trial orientation. As only one length is tested, and not all lengths as for an unknown cell,
/// few points among much noise are enough.
/// @param listPoint  single peaks, not merged, without the direct beam; above some thousands the search
///                   uses a sample of them, the results use all
/// @param fnGoOn     asked every few tenths of a second, in the calling thread; false ends the search
///                   without a result
/// @return nothing for numbers that make no cell, and where chance or a cell without constraints explains
///         the points as well. A wrong cell can still be found: fitted without constraints, one has
///         explained 0.66 of the points of another crystal. It can be recognized by the scale and by the
///         share that the rotated cell explains.
std::optional<KnownCellOrientation> orientKnownCell(const CellParameters& cell,
                                                    const LatticePoints& listPoint,
                                                    const KnownCellOptions& options = {},
                                                    const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
