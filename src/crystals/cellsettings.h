// Cell settings: how the indices of one crystal become those of another with the same lattice.
#pragma once

#include "lattice/latticebasis.h"
#include "records/cellparameters.h"

#include <Eigen/Core>

#include <vector>

namespace tessera {

/// How far two cells may be apart to be of one compound. Cells of electron diffraction are off by some per
/// cent, as camera lengths and distortions of the lens differ from crystal to crystal.
struct CellTolerance {
    double dfLengths = 4;  ///< greatest difference of an edge of the reduced cells, % of the mean of both
    double dfAngles = 3;   ///< greatest difference of an angle of the reduced cells, °
};

/// Rows a, b, c of Niggli's reduced cell of a lattice, and the transformation of indices from the given cell.
struct ReducedCell {
    LatticeBasis basis;          ///< Å, in the frame of directBasisOf() the given cell; right-handed
    CellParameters cell;         ///< of this basis
    Eigen::Matrix3d matIndices;  ///< (h, k, l) of the reduced cell = matIndices * (h, k, l) of the given one
};

/// The direct basis of a cell: rows a, b, c in Å, with a along x and b in the plane of x and y. A zero matrix
/// if the numbers span no cell.
LatticeBasis directBasisOf(const CellParameters& cell);

/// Niggli's reduced cell of a lattice that is given by a cell and its centring.
/// @param chCentring  of the given cell: P, A, B, C, I, F, or R in hexagonal axes in the obverse setting; any
///                    other letter counts as P
/// @return a zero basis if the numbers span no cell
ReducedCell reducedCell(const CellParameters& cell, char chCentring);

/// A change of the axes that brings one reduced cell onto another.
struct CellSetting {
    /// Each row has the coordinates of a new axis along the old ones. Indices are transformed by the same
    /// matrix: new (h, k, l) = matAxes * old (h, k, l). The determinant is 1.
    Eigen::Matrix3i matAxes;
    double dfLengths = 0;  ///< greatest difference of an edge after the change, % of the mean of both edges
    double dfAngles = 0;   ///< greatest difference of an angle after the change, °
    /// The greater of the two differences, each divided by its default in CellTolerance. It does not depend
    /// on the tolerance of a search.
    double misfit() const;
};

/// All settings that bring `from` onto `to` within the tolerance, in the order of misfit(); of equally close
/// ones the one that changes the axes least comes first. There are several if the lattice has a symmetry of
/// its own, or is close to a more symmetric one by chance; intensities may tell these settings apart.
/// The list is empty if the lattices differ.
///
/// Settings that change the handedness are not listed. They are the listed ones with all signs reversed, and
/// reverse all indices, which makes no difference by Friedel's law.
/// @param from  rows a, b, c of a reduced cell, Å, right-handed
/// @param to    likewise
/// Source: two reduced bases of one lattice differ by a matrix of -1, 0 and 1: Gruber (1973), Acta Cryst.
/// A29, 433–440. The search assumes the same of lattices within the tolerance.
std::vector<CellSetting> settingsBetween(const LatticeBasis& from, const LatticeBasis& to,
                                         const CellTolerance& tolerance = {});

/// How far apart two lattices are: the least difference of edges or angles, whichever is greater, over all
/// settings. Unlike misfit(), it is in units of the given tolerance: up to 1 within it, and 10 for lattices
/// that are ten times the tolerance apart or more.
/// @param first   rows a, b, c of a reduced cell, Å, right-handed
/// @param second  likewise
double latticeDistance(const LatticeBasis& first, const LatticeBasis& second,
                       const CellTolerance& tolerance = {});

}  // namespace tessera
