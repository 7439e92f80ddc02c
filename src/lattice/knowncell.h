// Orientation of a crystal whose cell is known, from points of reciprocal space.
#pragma once

#include "lattice/latticefit.h"
#include "records/cellparameters.h"

#include <functional>
#include <optional>

namespace tessera {

struct KnownCellOptions {
    double dfLengthTolerance = 0.05;            ///< share of a length by which the points' scale may be off
    double dfAngleTolerance = 3;                ///< degrees
    double dfTolerance = g_dfLatticeTolerance;  ///< of an index
    double dfLeastShare = 0.15;  ///< of the points to explain beyond chance; wrong cells reach a tenth easily
};

struct KnownCellOrientation {
    LatticeBasis matRotated = LatticeBasis::Identity();  ///< the cell as it is known, turned
    LatticeBasis matRefined = LatticeBasis::Identity();  ///< the same edges, fitted freely to the points
    double dfScale = 1;     ///< what the known lengths times it fit best, with the angles kept
    LatticeFit fitRotated;  ///< of all points
    LatticeFit fitScaled;   ///< of the turned cell times the scale
    LatticeFit fitRefined;
};

/// The basis of a cell: a along x, b in the plane of x and y, right-handed.
/// @return none for numbers that make no cell, and for edges below 0.5 or above 2000 Å
std::optional<LatticeBasis> basisOfCell(const CellParameters& cell);

/// The rotation of the cell that explains most points, within the tolerances.
///
/// Along each direction of a hemisphere the points' projections are asked whether they are periodic with the
/// length of one of the three shortest edges; the directions that answer best are refined, paired by their
/// angle, and each pair is a trial rotation. That asks for one length alone where a search for an unknown
/// cell has to try all, so few points among much noise are enough.
/// @param listPoint  single peaks, not merged, without the direct beam; above some thousand they are thinned
///                   for the search, not for the numbers
/// @param fnGoOn     asked every few tenths of a second, in the calling thread; false ends the search without
///                   a result
/// @return none for numbers that make no cell, and where chance, or free edges, explain as much. A wrong cell
///         can still be found: with its edges fitted freely one has explained 0.66 of the points of another
///         crystal. The share of the turned cell and the scale tell.
std::optional<KnownCellOrientation> orientKnownCell(const CellParameters& cell,
                                                    const LatticePoints& listPoint,
                                                    const KnownCellOptions& options = {},
                                                    const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
