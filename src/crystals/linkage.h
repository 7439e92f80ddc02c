// Linkage: hierarchical clustering by the mean distance of the members.
#pragma once

#include <cstddef>
#include <vector>

namespace tessera {

/// Distances between n things, each pair once.
class CDistances {
public:
    explicit CDistances(int nCount) : m_nCount(nCount), m_vec(size_t(nCount) * size_t(nCount), 0.0) {}
    int count() const { return m_nCount; }
    double at(int i, int j) const { return m_vec[size_t(i) * size_t(m_nCount) + size_t(j)]; }
    /// Sets it both ways.
    void set(int i, int j, double dfDistance)
    {
        m_vec[size_t(i) * size_t(m_nCount) + size_t(j)] = dfDistance;
        m_vec[size_t(j) * size_t(m_nCount) + size_t(i)] = dfDistance;
    }

private:
    int m_nCount;
    std::vector<double> m_vec;
};

/// Two clusters that become one. Things are the clusters 0 to n - 1; the merge of row i makes the cluster n +
/// i.
struct Joint {
    int nFirst = 0;   ///< the lower number of both
    int nSecond = 0;  ///< the higher
    double dfHeight = 0;
    int nSize = 0;  ///< things in it
};

/// n - 1 joints with heights that do not fall, by the mean of all distances between members of both ("average
/// linkage"). Of equal distances the pair comes first whose clusters hold the lowest numbers. The time goes
/// with n² as a rule.
/// Source: Sokal & Michener (1958), Univ. Kansas Sci. Bull. 38, 1409–1438.
std::vector<Joint> averageLinkage(const CDistances& distances);

/// The cluster of each thing when the tree is cut: joints up to `dfHeight` hold. Numbers from 0 in the order
/// of the first thing of each.
std::vector<int> clustersBelow(const std::vector<Joint>& listJoint, int nCount, double dfHeight);

/// The things in the order in which a tree can be drawn without crossing lines.
std::vector<int> leafOrder(const std::vector<Joint>& listJoint, int nCount);

}  // namespace tessera
