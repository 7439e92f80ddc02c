// Refined rows against the plain loop, to the last bit.
#include "lattice/rowrefinement.h"

#include "geometry/angles.h"
#include "tests/lattice/simulatedpoints.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tessera {
namespace {

LatticeRow plainRow(const Eigen::Vector3d& v, const LatticePoints& listPoint)
{
    LatticeRow row = {v, 0};
    for (int nRound = 0; nRound < 15; ++nRound) {
        const double dfNear = std::max(0.1, 0.3 - 0.03 * nRound);
        Eigen::Matrix3d matNormal = Eigen::Matrix3d::Zero();
        Eigen::Vector3d right = Eigen::Vector3d::Zero();
        int nNear = 0;
        for (const Eigen::Vector3d& point : listPoint) {
            const double dfIndex = point.dot(row.v);
            if (std::abs(dfIndex - std::round(dfIndex)) < dfNear) {
                matNormal += point * point.transpose();
                right += std::round(dfIndex) * point;
                ++nNear;
            }
        }
        const Eigen::Vector3d next = matNormal.ldlt().solve(right);
        if (nNear < 6 || !next.allFinite()) {
            return row;
        }
        const double dfChange = (next - row.v).norm();
        row.v = next;
        if (dfChange < 1e-6) {
            break;
        }
    }
    for (const Eigen::Vector3d& point : listPoint) {
        row.dfQuality += std::cos(2 * g_dfPi * point.dot(row.v));
    }
    row.dfQuality /= double(listPoint.size());
    return row;
}

}  // namespace

TEST(RefinedRows, AreThoseOfThePlainLoopForAnyNumberOfJobs)
{
    CSimulatedPoints points(5);
    const LatticeBasis basis = LatticeBasis(Eigen::Vector3d(7, 9, 12).asDiagonal()) * points.rotation();
    LatticePoints listPoint = points.reflections(basis, 0.6, 2e-3, [](int, int, int) { return 0.7; });
    const LatticePoints listNoise = points.noise(int(listPoint.size()) / 4, 0.6);
    listPoint.insert(listPoint.end(), listNoise.begin(), listNoise.end());
    const LatticePoints listFew(listPoint.begin(), listPoint.begin() + 7);
    std::vector<Eigen::Vector3d> vecVector;
    for (int n = 0; n < 120; ++n) {  // on edges and diagonals, near them, and anywhere
        const Eigen::Vector3d edge = basis.row(n % 3).transpose() +
                                     (n % 4 ? 0.0 : 1.0) * basis.row(1).transpose();
        const Eigen::Vector3d off(points.normal(), points.normal(), points.normal());
        vecVector.push_back(edge + 0.06 * (n % 10) * off);
    }
    vecVector.push_back(Eigen::Vector3d::Zero());
    vecVector.push_back(Eigen::Vector3d(1e15, 3e14, -2e15));  // indices without a part behind the point
    for (const LatticePoints& list : {listPoint, listFew}) {
        for (const int nJobs : {1, 2, 3, 5}) {
            const std::vector<LatticeRow> vecRow = refinedRows(vecVector, list, nJobs);
            ASSERT_EQ(vecRow.size(), vecVector.size());
            for (size_t n = 0; n < vecRow.size(); ++n) {
                const LatticeRow plain = plainRow(vecVector[n], list);
                EXPECT_EQ(vecRow[n].v, plain.v)
                    << n << " with " << nJobs << " jobs and " << list.size() << " points";
                EXPECT_EQ(vecRow[n].dfQuality, plain.dfQuality)
                    << n << " with " << nJobs << " jobs and " << list.size() << " points";
            }
        }
    }
    int nGood = 0;
    for (const LatticeRow& row : refinedRows(vecVector, listPoint, 2)) {
        nGood += row.dfQuality > 0.5;
    }
    EXPECT_GT(nGood, 60);  // the points are of a lattice
    EXPECT_TRUE(refinedRows(vecVector, listPoint, 2, [] { return false; }).empty());
}

}  // namespace tessera
