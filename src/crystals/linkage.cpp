#include "crystals/linkage.h"

#include <algorithm>
#include <numeric>

namespace tessera {

namespace {

/// Clusters in slots, each in the slot of one of its things, with the closest of those in later slots.
class CClusters {
public:
    explicit CClusters(const CDistances& distances)
        : m_distances(distances),
          m_listAlive(size_t(distances.count()), 1),
          m_listNearest(size_t(distances.count()), -1)
    {
        for (int i = 0; i < m_distances.count(); ++i) {
            findNearest(i);
        }
    }

    /// The first slot of the closest two; of equal ones the lowest numbers.
    int closest() const
    {
        int nBest = -1;
        for (int i = 0; i < m_distances.count(); ++i) {
            if (m_listAlive[i] && nearest(i) >= 0 &&
                (nBest < 0 || m_distances.at(i, nearest(i)) < m_distances.at(nBest, nearest(nBest)))) {
                nBest = i;
            }
        }
        return nBest;
    }
    int nearest(int i) const { return m_listNearest[i]; }
    double distance(int i, int j) const { return m_distances.at(i, j); }

    /// Puts the second into the slot of the first, the means being weighted by the sizes of both.
    void join(int nKept, int nGone, double dfKept, double dfGone)
    {
        m_listAlive[nGone] = 0;
        for (int k = 0; k < m_distances.count(); ++k) {
            if (m_listAlive[k] && k != nKept) {
                m_distances.set(nKept, k,
                                (dfKept * m_distances.at(nKept, k) + dfGone * m_distances.at(nGone, k)) /
                                    (dfKept + dfGone));
            }
        }
        for (int i = 0; i < m_distances.count(); ++i) {
            if (!m_listAlive[i]) {
                continue;
            }
            if (i == nKept || nearest(i) == nKept || nearest(i) == nGone) {
                findNearest(i);
            } else if (i < nKept && isCloser(i, nKept, nearest(i))) {
                m_listNearest[i] = nKept;
            }
        }
    }

private:
    bool isCloser(int i, int nOne, int nOther) const
    {
        return nOther < 0 || m_distances.at(i, nOne) < m_distances.at(i, nOther) ||
               (m_distances.at(i, nOne) == m_distances.at(i, nOther) && nOne < nOther);
    }
    void findNearest(int i)
    {
        int nNearest = -1;
        for (int j = i + 1; j < m_distances.count(); ++j) {
            if (m_listAlive[j] && isCloser(i, j, nNearest)) {
                nNearest = j;
            }
        }
        m_listNearest[i] = nNearest;
    }

    CDistances m_distances;
    std::vector<char> m_listAlive;
    std::vector<int> m_listNearest;  ///< -1: none is left behind it
};

}  // namespace

std::vector<Joint> averageLinkage(const CDistances& distances)
{
    const int nCount = distances.count();
    CClusters clusters(distances);
    std::vector<int> listName(nCount, 0);  // number of the cluster in a slot
    std::iota(listName.begin(), listName.end(), 0);
    std::vector<int> listSize(nCount, 1);
    std::vector<Joint> listJoint;
    double dfHeight = 0;
    for (int nStep = 0; nStep + 1 < nCount; ++nStep) {
        const int nFirst = clusters.closest(), nSecond = clusters.nearest(nFirst);
        const size_t nKept = size_t(nFirst), nGone = size_t(nSecond);
        // The mean of two distances may round below both, and a tree is cut by heights that do not fall.
        dfHeight = std::max(dfHeight, clusters.distance(nFirst, nSecond));
        clusters.join(nFirst, nSecond, listSize[nKept], listSize[nGone]);
        Joint joint;
        joint.nFirst = std::min(listName[nKept], listName[nGone]);
        joint.nSecond = std::max(listName[nKept], listName[nGone]);
        joint.dfHeight = dfHeight;
        joint.nSize = listSize[nKept] + listSize[nGone];
        listJoint.push_back(joint);
        listName[nKept] = nCount + nStep;
        listSize[nKept] = joint.nSize;
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
        while (listParent[nRoot] != nRoot) {
            nRoot = listParent[nRoot];
        }
        if (listNumber[nRoot] < 0) {
            listNumber[nRoot] = nClusters++;
        }
        listCluster.push_back(listNumber[nRoot]);
    }
    return listCluster;
}

std::vector<int> leafOrder(const std::vector<Joint>& listJoint, int nCount)
{
    std::vector<int> listOrder;
    std::vector<int> listOpen;  // clusters that are still to be opened, the next one last
    if (listJoint.empty()) {
        listOrder.resize(nCount);
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
            const Joint& joint = listJoint[nCluster - nCount];
            listOpen.push_back(joint.nSecond);
            listOpen.push_back(joint.nFirst);
        }
    }
    return listOrder;
}

}  // namespace tessera
