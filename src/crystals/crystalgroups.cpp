#include "crystals/crystalgroups.h"

#include "crystals/cellrelation.h"

#include <algorithm>
#include <limits>

namespace tessera {

namespace {

/// The member with the least sum of distances to the others of its group.
int middleOf(const std::vector<int>& listPlace, const CDistances& distances)
{
    int nMiddle = listPlace.front();
    double dfLeast = std::numeric_limits<double>::infinity();
    for (const int nOne : listPlace) {
        double dfSum = 0;
        for (const int nOther : listPlace) {
            dfSum += distances.at(nOne, nOther);
        }
        if (dfSum < dfLeast) {
            dfLeast = dfSum;
            nMiddle = nOne;
        }
    }
    return nMiddle;
}

}  // namespace

CrystalGroups groupByCell(const std::vector<Crystal>& listCrystal, const CellTolerance& tolerance)
{
    CrystalGroups groups;
    std::vector<LatticeBasis> listBasis;
    for (size_t n = 0; n < listCrystal.size(); ++n) {
        const ReducedCell reduced = reducedCell(listCrystal[n].cell, listCrystal[n].chCentring);
        if (reduced.basis.isZero()) {
            groups.listNoCell.push_back(int(n));
        } else {
            groups.listInTree.push_back(int(n));
            listBasis.push_back(reduced.basis);
        }
    }
    const int nCount = int(listBasis.size());
    CDistances distances(nCount);
    for (int i = 0; i < nCount; ++i) {
        for (int j = i + 1; j < nCount; ++j) {
            distances.set(i, j, latticeDistance(listBasis[i], listBasis[j], tolerance));
        }
    }
    groups.listJoint = averageLinkage(distances);
    const std::vector<int> listCluster = clustersBelow(groups.listJoint, nCount, 1);
    const int nClusters = listCluster.empty() ? 0
                                              : 1 + *std::max_element(listCluster.begin(), listCluster.end());
    std::vector<std::vector<int>> listPlaces{size_t(nClusters)};
    for (int n = 0; n < nCount; ++n) {
        listPlaces[size_t(listCluster[n])].push_back(n);
    }
    for (const std::vector<int>& listPlace : listPlaces) {
        CrystalGroup group;
        group.tolerance = tolerance;
        group.reference = listBasis[size_t(middleOf(listPlace, distances))];
        for (const int n : listPlace) {
            group.listMember.push_back(groups.listInTree[n]);
        }
        groups.listGroup.push_back(std::move(group));
    }
    std::stable_sort(groups.listGroup.begin(), groups.listGroup.end(),
                     [](const CrystalGroup& one, const CrystalGroup& other) {
                         return one.listMember.size() > other.listMember.size();
                     });
    for (size_t n = 1; n < groups.listGroup.size(); ++n) {
        groups.listGroup[n].strRelation = relationText(groups.listGroup[n].reference,
                                                       groups.listGroup.front().reference, tolerance);
    }
    return groups;
}

}  // namespace tessera
