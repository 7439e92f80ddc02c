#include "crystals/linkage.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>

namespace tessera {

namespace {

/// The closest two of the clusters that are left.
struct Closest {
    int nFirst = -1;
    int nSecond = -1;
    double dfDistance = std::numeric_limits<double>::infinity();
};

}  // namespace

std::vector<Joint> averageLinkage(const CDistances& distances)
{
    const int nCount = distances.count();
    CDistances work = distances;                   // by slot: a cluster keeps the slot of one of its things
    std::vector<int> listName(size_t(nCount), 0);  // number of the cluster in a slot, -1: joined to another
    std::iota(listName.begin(), listName.end(), 0);
    std::vector<int> listSize(size_t(nCount), 1);
    std::vector<Joint> listJoint;
    for (int nStep = 0; nStep + 1 < nCount; ++nStep) {
        Closest closest;
        for (int i = 0; i < nCount; ++i) {
            for (int j = i + 1; listName[size_t(i)] >= 0 && j < nCount; ++j) {
                if (listName[size_t(j)] >= 0 && (work.at(i, j) < closest.dfDistance || closest.nFirst < 0)) {
                    closest = {i, j, work.at(i, j)};
                }
            }
        }
        const size_t nKept = size_t(closest.nFirst), nGone = size_t(closest.nSecond);
        const double dfKept = listSize[nKept], dfGone = listSize[nGone];
        for (int k = 0; k < nCount; ++k) {
            if (listName[size_t(k)] >= 0 && k != closest.nFirst && k != closest.nSecond) {
                work.set(closest.nFirst, k,
                         (dfKept * work.at(closest.nFirst, k) + dfGone * work.at(closest.nSecond, k)) /
                             (dfKept + dfGone));
            }
        }
        Joint joint;
        joint.nFirst = std::min(listName[nKept], listName[nGone]);
        joint.nSecond = std::max(listName[nKept], listName[nGone]);
        joint.dfHeight = closest.dfDistance;
        joint.nSize = listSize[nKept] + listSize[nGone];
        listJoint.push_back(joint);
        listName[nKept] = nCount + nStep;
        listSize[nKept] = joint.nSize;
        listName[nGone] = -1;
    }
    return listJoint;
}

std::vector<int> clustersBelow(const std::vector<Joint>& listJoint, int nCount, double dfHeight)
{
    std::vector<int> listParent(size_t(nCount) + listJoint.size());
    std::iota(listParent.begin(), listParent.end(), 0);
    for (size_t n = 0; n < listJoint.size(); ++n) {
        if (listJoint[n].dfHeight <= dfHeight) {
            listParent[size_t(listJoint[n].nFirst)] = nCount + int(n);
            listParent[size_t(listJoint[n].nSecond)] = nCount + int(n);
        }
    }
    std::vector<int> listNumber(listParent.size(), -1);
    std::vector<int> listCluster;
    int nClusters = 0;
    for (int nThing = 0; nThing < nCount; ++nThing) {
        int nRoot = nThing;
        while (listParent[size_t(nRoot)] != nRoot) {
            nRoot = listParent[size_t(nRoot)];
        }
        if (listNumber[size_t(nRoot)] < 0) {
            listNumber[size_t(nRoot)] = nClusters++;
        }
        listCluster.push_back(listNumber[size_t(nRoot)]);
    }
    return listCluster;
}

std::vector<int> leafOrder(const std::vector<Joint>& listJoint, int nCount)
{
    std::vector<int> listOrder;
    std::vector<int> listOpen;  // clusters that are still to be opened, the next one last
    if (listJoint.empty()) {
        listOrder.resize(size_t(nCount));
        std::iota(listOrder.begin(), listOrder.end(), 0);
        return listOrder;
    }
    listOpen.push_back(nCount + int(listJoint.size()) - 1);
    while (!listOpen.empty()) {
        const int nCluster = listOpen.back();
        listOpen.pop_back();
        if (nCluster < nCount) {
            listOrder.push_back(nCluster);
        } else {
            const Joint& joint = listJoint[size_t(nCluster - nCount)];
            listOpen.push_back(joint.nSecond);
            listOpen.push_back(joint.nFirst);
        }
    }
    return listOrder;
}

}  // namespace tessera
