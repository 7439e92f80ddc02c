// EquivalentGroups: observations in groups that the symmetry makes equal.
#pragma once

#include "integration/observation.h"
#include "integration/reflectionflags.h"
#include "integration/scaling.h"

#include <array>
#include <vector>

namespace tessera {

struct EquivalentGroups {
    std::vector<int> listGroup;                 ///< of each observation; -1: takes no part
    std::vector<std::array<int, 3>> listIndex;  ///< of each group, in the asymmetric unit
    std::vector<int> listStart;                 ///< of each group in listMember, and the end
    std::vector<int> listMember;                ///< places of observations, in their order in each group

    int count() const { return int(listIndex.size()); }
    int sizeOf(int nGroup) const { return listStart[size_t(nGroup) + 1] - listStart[nGroup]; }
};

/// Whether an observation is a measurement: measured, with finite numbers of a size that a detector can give
/// (up to 1e30), and with none of the flags.
bool isUsable(const Observation& observation, unsigned nExcluding = g_nExcludingFlags);

/// Groups in the order of their h, k, l. Left out: what is not usable, and what is no point of the lattice.
/// @param nExcluding  flags with which an observation is left out
EquivalentGroups groupEquivalents(const std::vector<Observation>& listObservation,
                                  const ObservationSymmetry& symmetry, bool bFriedelApart = false,
                                  unsigned nExcluding = g_nExcludingFlags);

}  // namespace tessera
