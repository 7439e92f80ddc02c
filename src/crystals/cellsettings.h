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
    double dfLengths = 4;  ///< %, of an edge of the reduced cell
    double dfAngles = 3;   ///< °, of an angle
};

/// Rows a, b, c of Niggli's reduced cell of a lattice, and how indices of the cell that it was told by become
/// indices of it.
struct ReducedCell {
    LatticeBasis basis;          ///< Å, in the frame of directBasisOf() the given cell; right-handed
    CellParameters cell;         ///< of it
    Eigen::Matrix3d matIndices;  ///< (h, k, l) of the reduced cell = matIndices * (h, k, l) of the given one
};

/// Rows a, b, c of a cell in Å, a along x and b in the plane of x and y; zero where the numbers span no cell.
LatticeBasis directBasisOf(const CellParameters& cell);

/// @param chCentring  of the given cell: P, A, B, C, I, F, or R in hexagonal axes, obverse
/// @return a zero basis where the numbers span no cell
ReducedCell reducedCell(const CellParameters& cell, char chCentring);

/// A change of the axes that brings one reduced cell onto another.
struct CellSetting {
    Eigen::Matrix3i matAxes;  ///< rows: the new axes along the old; indices transform alike; determinant 1
    double dfLengths = 0;     ///< %, by which the worst edge differs then
    double dfAngles = 0;      ///< °, by which the worst angle differs
    double misfit() const;    ///< both in one number, in units of the tolerances' defaults
};

/// All that bring `from` onto `to` within the tolerance, the closest first, of equally close ones that which
/// changes the axes least: those of the lattice's own symmetry, which intensities may tell apart, and those
/// that lie near by chance. Empty: other lattices. Settings of the other hand are these with all indices
/// reversed, which Friedel's law makes equal, and are not listed.
/// Source: bases that are reduced alike differ by rows of -1, 0 and 1: Gruber (1973), Acta Cryst. A29,
/// 433–440.
std::vector<CellSetting> settingsBetween(const LatticeBasis& from, const LatticeBasis& to,
                                         const CellTolerance& tolerance = {});

/// How far apart two lattices are: the misfit of the closest setting; greater than 1 beyond the tolerance,
/// and 10 at most.
double latticeDistance(const LatticeBasis& first, const LatticeBasis& second,
                       const CellTolerance& tolerance = {});

}  // namespace tessera
