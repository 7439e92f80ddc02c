#include "reciprocal/reflectiongroups.h"

#include "crystal/indexkey.h"
#include "crystal/reflectionindices.h"
#include "crystal/spacegroupoperations.h"
#include "crystal/spacegrouptable.h"
#include "records/progress.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace tessera {

namespace {

/// h·R as a row vector, truncated to whole numbers.
IndexKey transformedIndices(const IndexKey& hkl, const CSymOp& operation)
{
    IndexKey result;
    for (size_t n = 0; n < 3; ++n) {
        result[n] = truncatedInt(hkl[0] * operation.dfRotation[n] + hkl[1] * operation.dfRotation[3 + n] +
                                 hkl[2] * operation.dfRotation[6 + n]);
    }
    return result;
}

}  // namespace

void assignReflectionGroups(QList<Peak3D>& listPeak, int nSpaceGroup, float fThreshold, CRunReport& report)
{
    const std::vector<CSymOp> vecOperation = operationsOfSpaceGroup(laueGroupNumber(nSpaceGroup));
    QList<Peak3D> listResult;
    QList<Peak3D> listToDo;
    for (const Peak3D& peak : qAsConst(listPeak)) {
        if (isCloseToInteger(peak, fThreshold)) {
            listToDo.append(peak);
        } else {
            listResult.append(peak);
            listResult.last().nRGroup = 0;
        }
    }
    const QList<HKLRef> listHKL = getRoundedHKLRef(listToDo);
    std::unordered_map<IndexKey, std::vector<int>, IndexKeyHash> mapPlace;
    for (int n = 0; n < listHKL.size(); ++n) {
        mapPlace[indexKey(listHKL[n])].push_back(n);
    }

    CProgress progress(report, QStringLiteral("%p%"), 0, (listToDo.size() - 1) / 10);
    std::vector<char> vecDone(listToDo.size(), 0);
    int nDone = 0;
    int nGroup = 1;
    std::vector<int> vecMember;
    for (int nFirst = 0; nFirst < listToDo.size(); ++nFirst) {
        if (vecDone[nFirst]) {
            continue;
        }
        const IndexKey hklFirst = indexKey(listHKL[nFirst]);
        vecMember.clear();
        // Each set of indices is taken out of the map, so an operation that repeats one finds it gone.
        const auto take = [&](const IndexKey& hkl) {
            const auto it = mapPlace.find(hkl);
            if (it == mapPlace.end()) {
                return;
            }
            vecMember.insert(vecMember.end(), it->second.begin(), it->second.end());
            mapPlace.erase(it);
        };
        take(hklFirst);
        for (const CSymOp& operation : vecOperation) {
            take(transformedIndices(hklFirst, operation));
        }
        std::sort(vecMember.begin(), vecMember.end());
        for (int n : vecMember) {
            vecDone[n] = 1;
            listResult.append(listToDo[n]);
            listResult.last().nRGroup = nGroup;
            if (++nDone % 10 == 0) {
                progress.set(nDone / 10);
            }
        }
        ++nGroup;
    }
    listPeak = listResult;
}

}  // namespace tessera
