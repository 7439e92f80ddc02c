// Lattice sharpness: how much points look like a lattice, without knowing it.
#pragma once

#include "lattice/directionsearch.h"

namespace tessera {

/// The mean cosine of 2π times the products of the points with the three best rows of real space that are
/// not in one plane. It is 1 for a perfect lattice and a few tenths for points at random. A missing row
/// counts as 0.
/// @param options  range of the lengths, number of directions, threads
double latticeSharpness(const LatticePoints& listPoint, const DirectionSearchOptions& options);

/// The shortest length, Å, at which the Fourier sums show rows clearly. At shorter lengths they show the
/// outline of the cloud of points across its thinnest direction, which for a small range of tilts is along
/// the beam. No row is lost by this, as multiples of rows are rows, too.
/// @return at least the shortest length of the options, and at most that or a third of the longest one
double shortestClearRow(const LatticePoints& listPoint, const DirectionSearchOptions& options);

}  // namespace tessera
