// Vector piles: each vector with its neighbours, summed.
#pragma once

#include "reciprocal/differencevectors.h"
#include "records/runreport.h"

#include <optional>
#include <vector>

namespace tessera {

/// The sums over a vector and its neighbours.
struct PileSum {
    float fSX, fSY, fSZ;  ///< of weight times vector
    float fWeight;
};

/// For each vector, the sums over all that lie within `fTolerance` (Å⁻¹) of it and differ in length by less
/// than half of that.
///
/// The sums are in single precision: first the vector itself, then its neighbours in the order of the list.
/// That makes them the same for any number of jobs.
/// @param vecVector  ascending by d*
/// @return none when the run was stopped
std::optional<std::vector<PileSum>> sumPiles(const std::vector<DifferenceVector>& vecVector, float fTolerance,
                                             int nJobs, CRunReport& report);

/// The side of the cubes to look for neighbours in, a little wider than the tolerance, as squares are
/// rounded.
double cubeSide(float fTolerance);

}  // namespace tessera
