// Trees of distances: the mean linkage against its definition, cuts, and the order of leaves.
#include "crystals/linkage.h"

#include <QFile>
#include <QTextStream>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace tessera {
namespace {

CDistances randomDistances(int nCount, unsigned nSeed, int nSteps)
{
    std::mt19937 random(nSeed);
    CDistances distances(nCount);
    for (int i = 0; i < nCount; ++i) {
        for (int j = i + 1; j < nCount; ++j) {
            distances.set(i, j, double(random() % unsigned(nSteps)) / nSteps);
        }
    }
    return distances;
}

/// The definition itself: members of both, mean of all distances between, the closest two of all.
std::vector<Joint> byDefinition(const CDistances& distances)
{
    std::vector<std::pair<int, std::vector<int>>> listCluster;
    for (int n = 0; n < distances.count(); ++n) {
        listCluster.push_back({n, {n}});
    }
    std::vector<Joint> listJoint;
    while (listCluster.size() > 1) {
        size_t nOne = 0, nOther = 1;
        double dfLeast = HUGE_VAL;
        for (size_t i = 0; i < listCluster.size(); ++i) {
            for (size_t j = i + 1; j < listCluster.size(); ++j) {
                double dfSum = 0;
                for (const int a : listCluster[i].second) {
                    for (const int b : listCluster[j].second) {
                        dfSum += distances.at(a, b);
                    }
                }
                dfSum /= double(listCluster[i].second.size() * listCluster[j].second.size());
                if (dfSum < dfLeast - 1e-12) {
                    dfLeast = dfSum;
                    nOne = i;
                    nOther = j;
                }
            }
        }
        auto& one = listCluster[nOne];
        const auto other = listCluster[nOther];
        one.second.insert(one.second.end(), other.second.begin(), other.second.end());
        listJoint.push_back({std::min(one.first, other.first), std::max(one.first, other.first), dfLeast,
                             int(one.second.size())});
        one.first = distances.count() + int(listJoint.size()) - 1;
        listCluster.erase(listCluster.begin() + std::ptrdiff_t(nOther));
    }
    return listJoint;
}

TEST(Linkage, joinsTheClosestByTheMeanOfAllDistances)
{
    for (unsigned nSeed = 1; nSeed <= 20; ++nSeed) {
        const CDistances distances = randomDistances(int(nSeed) + 1, nSeed, 1 << 30);
        const std::vector<Joint> listJoint = averageLinkage(distances), listTrue = byDefinition(distances);
        ASSERT_EQ(listJoint.size(), listTrue.size());
        for (size_t n = 0; n < listJoint.size(); ++n) {
            EXPECT_EQ(listJoint[n].nFirst, listTrue[n].nFirst);
            EXPECT_EQ(listJoint[n].nSecond, listTrue[n].nSecond);
            EXPECT_EQ(listJoint[n].nSize, listTrue[n].nSize);
            EXPECT_NEAR(listJoint[n].dfHeight, listTrue[n].dfHeight, 1e-12);
        }
    }
}

TEST(Linkage, ofEqualDistancesTheLowestNumbersComeFirst)
{
    CDistances distances(4);
    for (int i = 0; i < 4; ++i) {
        for (int j = i + 1; j < 4; ++j) {
            distances.set(i, j, 1);
        }
    }
    const std::vector<Joint> listJoint = averageLinkage(distances);
    EXPECT_EQ(listJoint[0].nFirst, 0);
    EXPECT_EQ(listJoint[0].nSecond, 1);
    EXPECT_EQ(listJoint[1].nFirst, 2);  // 2 with the cluster 4 of 0 and 1, whose slot is the first
    EXPECT_EQ(listJoint[1].nSecond, 4);
}

TEST(Linkage, cutsAndLeavesOfTreesWithEqualDistances)
{
    for (unsigned nSeed = 1; nSeed <= 20; ++nSeed) {
        const int nCount = 15;
        const CDistances distances = randomDistances(nCount, nSeed, 4);
        const std::vector<Joint> listJoint = averageLinkage(distances);
        ASSERT_EQ(listJoint.size(), size_t(nCount - 1));
        EXPECT_TRUE(std::is_sorted(listJoint.begin(), listJoint.end(),
                                   [](const Joint& a, const Joint& b) { return a.dfHeight < b.dfHeight; }));
        for (const double dfCut : {-1.0, 0.3, 0.5, 2.0}) {
            const std::vector<int> listCluster = clustersBelow(listJoint, nCount, dfCut);
            const auto nHeld = std::count_if(listJoint.begin(), listJoint.end(),
                                             [&](const Joint& joint) { return joint.dfHeight <= dfCut; });
            EXPECT_EQ(std::set<int>(listCluster.begin(), listCluster.end()).size(), size_t(nCount - nHeld));
            EXPECT_EQ(listCluster.front(), 0);
        }
        // Each cluster is one piece of the order of the leaves.
        const std::vector<int> listLeaf = leafOrder(listJoint, nCount);
        EXPECT_EQ(std::set<int>(listLeaf.begin(), listLeaf.end()).size(), size_t(nCount));
        const std::vector<int> listCluster = clustersBelow(listJoint, nCount, 0.4);
        std::set<int> setClosed;
        for (size_t n = 1; n < listLeaf.size(); ++n) {
            const int nBefore = listCluster[size_t(listLeaf[n - 1])], nNow = listCluster[size_t(listLeaf[n])];
            if (nBefore != nNow) {
                EXPECT_TRUE(setClosed.insert(nBefore).second);
                EXPECT_EQ(setClosed.count(nNow), 0u);
            }
        }
    }
    EXPECT_TRUE(averageLinkage(CDistances(1)).empty());
    EXPECT_EQ(clustersBelow({}, 1, 1), std::vector<int>{0});
    EXPECT_TRUE(averageLinkage(CDistances(0)).empty());
}

/// Used by treesofscipy.py, which writes the distances and compares the trees with those of scipy.
TEST(Linkage, ofDistancesFromAFile)
{
    const QString strFolder = qEnvironmentVariable("TESSERA_TREES");
    if (strFolder.isEmpty()) {
        GTEST_SKIP() << "no folder is named by TESSERA_TREES";
    }
    QFile fileIn(strFolder + QStringLiteral("/distances.txt")),
        fileOut(strFolder + QStringLiteral("/joints.txt"));
    ASSERT_TRUE(fileIn.open(QIODevice::ReadOnly) && fileOut.open(QIODevice::WriteOnly));
    QTextStream in(&fileIn), out(&fileOut);
    out.setRealNumberPrecision(17);
    int nCount = 0;
    for (in >> nCount; nCount > 0; in >> nCount) {
        CDistances distances(nCount);
        for (int i = 0; i < nCount; ++i) {
            for (int j = i + 1; j < nCount; ++j) {
                double dfDistance = 0;
                in >> dfDistance;
                distances.set(i, j, dfDistance);
            }
        }
        const std::vector<Joint> listJoint = averageLinkage(distances);
        for (const Joint& joint : listJoint) {
            out << joint.nFirst << ' ' << joint.nSecond << ' ' << joint.dfHeight << ' ' << joint.nSize
                << '\n';
        }
        for (const int n : clustersBelow(listJoint, nCount, 0.45)) {
            out << n << ' ';
        }
        out << '\n';
        nCount = 0;
    }
}

}  // namespace
}  // namespace tessera
