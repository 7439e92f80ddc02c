#include "reciprocal/differencegroups.h"

#include "crystal/reflectionindices.h"

#include <unordered_map>

namespace tessera {

namespace {

// Returns the triple or its negative, whichever has a positive first number that isn't 0.
IndexKey withoutSign(const IndexKey& key)
{
    for (int n : key) {
        if (n > 0) {
            break;
        }
        if (n < 0) {  // in unsigned numbers, as the negative of the least int is no int
            return {int(0u - unsigned(key[0])), int(0u - unsigned(key[1])), int(0u - unsigned(key[2]))};
        }
    }
    return key;
}

}  // namespace

std::vector<std::vector<int>> groupsOfDifferences(const std::vector<IndexKey>& vecDifference)
{
    std::vector<std::vector<int>> vecGroup;
    std::unordered_map<IndexKey, int, IndexKeyHash> mapGroup;
    for (std::size_t n = 0; n < vecDifference.size(); ++n) {
        const auto found = mapGroup.emplace(withoutSign(vecDifference[n]), int(vecGroup.size()));
        if (found.second) {
            vecGroup.emplace_back();
        }
        vecGroup[found.first->second].push_back(int(n));
    }
    return vecGroup;
}

QList<QList<int>> groupDifferenceVectors(const QList<Peak3D>& listDifference)
{
    std::vector<IndexKey> vecKey;
    vecKey.reserve(listDifference.size());
    for (const Peak3D& peak : listDifference) {
        vecKey.push_back({roundIndex(peak.dfH), roundIndex(peak.dfK), roundIndex(peak.dfL)});
    }
    QList<QList<int>> listGroup;
    for (const std::vector<int>& vecGroup : groupsOfDifferences(vecKey)) {
        listGroup.append(QList<int>(vecGroup.begin(), vecGroup.end()));
    }
    return listGroup;
}

}  // namespace tessera
