// Direction search: finds lattices by Fourier sums of points over directions of real space.
#pragma once

#include "lattice/latticebasis.h"

#include <functional>
#include <optional>

namespace tessera {

/// Options of the direction search.
struct DirectionSearchOptions {
    double dfShortest = 2;     ///< shortest length that is searched, Å
    double dfLongest = 100;    ///< longest length, Å
    int nDirections = 12000;   ///< number of directions over a hemisphere
    double dfTolerance = 0.2;  ///< of an index
    int nJobs = 1;             ///< threads; the result does not depend on it
};

/// A lattice that the direction search has found.
struct DirectionLattice {
    LatticeBasis matBasis;  ///< right-handed, short
    int nFitting = 0;       ///< number of points that fit within the tolerance
    double dfVolume = 0;    ///< of the cell, Å³
};

/// Finds the lattice with the smallest cell that explains most of the points. Projected onto the normal of
/// a set of net planes, the points form a comb, whose period a Fourier transform finds for all lengths at
/// once. As no pairs of points are needed, neither missing reflections nor long edges matter.
///
/// @param listPoint  single peaks, not merged, without the direct beam
/// @param fnGoOn     asked now and then, in the calling thread; false ends the search without a result
/// @return nothing where fewer than ten points are on one lattice
/// Source: Steller, Bolotovsky & Rossmann (1997), J. Appl. Cryst. 30, 1036–1040.
std::optional<DirectionLattice> searchDirections(const LatticePoints& listPoint,
                                                 const DirectionSearchOptions& options,
                                                 const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
