// EquivalentGroups: observations grouped by symmetry-equivalent reflections.
#pragma once

#include "integration/observation.h"
#include "integration/reflectionflags.h"
#include "integration/scaling.h"

#include <array>
#include <vector>

namespace tessera {

/// Groups of equivalent observations.
struct EquivalentGroups {
    std::vector<int> listGroup;                 ///< group of each observation; -1: left out
    std::vector<std::array<int, 3>> listIndex;  ///< h, k, l of each group, in the asymmetric unit
    std::vector<int> listStart;   ///< index in listMember at which each group starts, and the end of the last
    std::vector<int> listMember;  ///< indices of observations, group after group, ascending in each

    int count() const { return int(listIndex.size()); }  ///< number of groups
    /// The number of observations in a group.
    int sizeOf(int nGroup) const { return listStart[size_t(nGroup) + 1] - listStart[nGroup]; }
};

/// Whether an observation is usable: it was measured, its numbers are finite and of a size that a detector
/// can give (up to 1e30), and it has none of the given flags.
bool isUsable(const Observation& observation, unsigned nExcluding = g_nExcludingFlags);

/// Groups observations by equivalent reflections; the groups are in the order of h, k, l. Observations that
/// are not usable, or whose reflection the centring forbids, are left out.
/// @param nExcluding  flags with which an observation is left out
EquivalentGroups groupEquivalents(const std::vector<Observation>& listObservation,
                                  const ObservationSymmetry& symmetry,
                                  FriedelMates mates = FriedelMates::Equivalent,
                                  unsigned nExcluding = g_nExcludingFlags);

}  // namespace tessera
