#include "integration/equivalents.h"

#include "integration/asymmetricunit.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tessera {

namespace {

/// The indices in the conventional setting. In a centred cell in force, indices that do not become whole are
/// not lattice points; none is returned for them.
std::optional<std::array<int, 3>> wholeIndex(const ObservationSymmetry& symmetry,
                                             const std::array<int, 3>& anIndex)
{
    for (const auto& anRow : symmetry.anTransform) {
        const int nSum = anRow[0] * anIndex[0] + anRow[1] * anIndex[1] + anRow[2] * anIndex[2];
        if (nSum % std::max(1, symmetry.nDenominator) != 0) {
            return std::nullopt;
        }
    }
    return conventionalIndex(symmetry, anIndex);
}

struct Key {
    std::array<int, 3> anIndex;
    bool bMate;
    int nObservation;

    bool sameGroup(const Key& other) const { return anIndex == other.anIndex && bMate == other.bMate; }
};

}  // namespace

std::array<int, 3> conventionalIndex(const ObservationSymmetry& symmetry, const std::array<int, 3>& anIndex)
{
    std::array<int, 3> an = {};
    for (size_t n = 0; n < 3; ++n) {
        const auto& anRow = symmetry.anTransform[n];
        an[n] = (anRow[0] * anIndex[0] + anRow[1] * anIndex[1] + anRow[2] * anIndex[2]) /
                std::max(1, symmetry.nDenominator);
    }
    return an;
}

bool isUsable(const Observation& observation, unsigned nExcluding)
{
    const double dfLargest = 1e30;  // so that squares and their sums stay finite
    const auto isSane = [&](double df) { return std::isfinite(df) && std::abs(df) < dfLargest; };
    return (observation.nFlags & nExcluding) == 0 && observation.isMeasured() &&
           isSane(observation.dfFrame) && isSane(observation.dfDStar) && isSane(observation.dfIntensity) &&
           isSane(observation.dfSigma) && observation.dfSigma > 1 / dfLargest &&
           isSane(observation.corrected()) && isSane(observation.correctedSigma()) &&
           observation.correctedSigma() > 1 / dfLargest;
}

EquivalentGroups groupEquivalents(const std::vector<Observation>& listObservation,
                                  const ObservationSymmetry& symmetry, FriedelMates mates,
                                  unsigned nExcluding)
{
    const CAsymmetricUnit unit(symmetry.ops);
    std::vector<Key> listKey;
    for (size_t n = 0; n < listObservation.size(); ++n) {
        if (!isUsable(listObservation[n], nExcluding)) {
            continue;
        }
        const std::optional<std::array<int, 3>> anIndex = wholeIndex(symmetry, listObservation[n].anIndex);
        if (!anIndex || unit.isAbsent(*anIndex)) {
            continue;
        }
        const CAsymmetricUnit::Image image = unit.representative(*anIndex);
        listKey.push_back({image.anIndex, mates == FriedelMates::Apart && image.bMate, int(n)});
    }
    std::sort(listKey.begin(), listKey.end(), [](const Key& one, const Key& other) {
        return std::tie(one.anIndex, one.bMate, one.nObservation) <
               std::tie(other.anIndex, other.bMate, other.nObservation);
    });
    EquivalentGroups groups;
    groups.listGroup.assign(listObservation.size(), -1);
    for (size_t n = 0; n < listKey.size(); ++n) {
        if (n == 0 || !listKey[n].sameGroup(listKey[n - 1])) {
            groups.listStart.push_back(int(n));
            groups.listIndex.push_back(listKey[n].anIndex);
        }
        groups.listGroup[size_t(listKey[n].nObservation)] = groups.count() - 1;
        groups.listMember.push_back(listKey[n].nObservation);
    }
    groups.listStart.push_back(int(listKey.size()));
    return groups;
}

}  // namespace tessera
