// Lattice sharpness: how much points look like a lattice, without a lattice.
#pragma once

#include "lattice/directionsearch.h"

namespace tessera {

/// The mean cosine of 2π times the products of the points with the three best rows of real space that are not
/// in one plane: 1 for a perfect lattice, a few tenths for points that lie anywhere. A row that is missing
/// counts as 0.
/// @param options  range of the rows, number of directions, threads
double latticeSharpness(const LatticePoints& listPoint, const DirectionSearchOptions& options);

/// The shortest rows, Å, that the sums show clearly: those of shorter ones show the outline of the cloud of
/// points across its thinnest direction, which for a small turn of the crystal is along the beam. Multiples
/// of rows are rows, so none is lost.
/// @return at least the shortest of the options, at most that or a third of the longest
double shortestClearRow(const LatticePoints& listPoint, const DirectionSearchOptions& options);

}  // namespace tessera
