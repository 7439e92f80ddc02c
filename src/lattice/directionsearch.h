// Direction search: lattices by Fourier sums of points of reciprocal space over directions of real space.
#pragma once

#include "lattice/latticebasis.h"

#include <functional>
#include <optional>

namespace tessera {

struct DirectionSearchOptions {
    double dfShortest = 2;     ///< Å, range of the lengths looked for
    double dfLongest = 100;    ///< Å
    int nDirections = 12000;   ///< of a hemisphere
    double dfTolerance = 0.2;  ///< of an index
    int nJobs = 1;             ///< threads; the result is the same for every number
};

struct DirectionLattice {
    LatticeBasis matBasis;  ///< right-handed, short
    int nFitting = 0;       ///< points within the tolerance, of all
    double dfVolume = 0;    ///< Å³
};

/// The lattice that explains most of the points with the smallest cell: the points, projected on a direction,
/// lie on a comb of the spacing of its net planes, which a Fourier transform finds at once for all lengths.
/// It needs no pairs of points, so neither missing reflections nor long edges harm it.
///
/// @param listPoint  single peaks, not merged, without the direct beam
/// @param fnGoOn     asked now and then, in the calling thread; false ends the search without a result
/// @return none where fewer than ten points lie on one lattice
/// Source: Steller, Bolotovsky & Rossmann (1997), J. Appl. Cryst. 30, 1036–1040.
std::optional<DirectionLattice> searchDirections(const LatticePoints& listPoint,
                                                 const DirectionSearchOptions& options,
                                                 const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
