#include "reciprocal/duplicates.h"

#include "crystal/indexkey.h"
#include "crystal/reflectionindices.h"

#include <unordered_map>
#include <vector>

namespace tessera {

QList<QList<Peak3D>> takeDuplicateReflections(const QList<Peak3D>& listPeak)
{
    const QList<HKLRef> listHKL = getRoundedHKLRef(listPeak);
    std::unordered_map<IndexKey, size_t, IndexKeyHash> mapGroup;
    std::vector<std::vector<int>> vecGroup;  // in order of first appearance
    for (int n = 0; n < listHKL.size(); ++n) {
        const auto inserted = mapGroup.emplace(indexKey(listHKL[n]), vecGroup.size());
        if (inserted.second) {
            vecGroup.emplace_back();
        }
        vecGroup[inserted.first->second].push_back(n);
    }
    QList<Peak3D> listKept;
    QList<Peak3D> listDuplicate;
    for (const std::vector<int>& vecMember : vecGroup) {
        int nBest = vecMember.front();
        for (int n : vecMember) {
            if (float(listPeak[n].dfIPoint) > float(listPeak[nBest].dfIPoint)) {
                nBest = n;
            }
        }
        listKept.append(listPeak[nBest]);
        for (int n : vecMember) {
            if (n != nBest) {
                listDuplicate.append(listPeak[n]);
            }
        }
    }
    return {listKept, listDuplicate};
}

}  // namespace tessera
