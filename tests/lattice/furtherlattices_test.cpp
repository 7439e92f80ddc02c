// Twins and neighbours in what the first lattice leaves over, and crystals that have none.
#include "lattice/furtherlattices.h"

#include "lattice/knowncell.h"
#include "records/pi.h"
#include "tests/lattice/simulatedpoints.h"

#include <gtest/gtest.h>

namespace tessera {
namespace {

const CellParameters g_orthorhombic = {7.3, 9.1, 11.6, 90, 90, 90};

Eigen::Matrix3d turnBy(double dfDegrees, const Eigen::Vector3d& axis)
{
    return Eigen::AngleAxisd(dfDegrees * g_dfPi / 180, axis.normalized()).toRotationMatrix();
}

LatticeBasis turned(const LatticeBasis& basis, const Eigen::Matrix3d& matTurn)
{
    return basis * matTurn.transpose();
}

TEST(LatticeTurn, IsTheLeastByTheSymmetryOfTheLattice)
{
    struct Case {
        CellParameters cell;
        double dfTurn;
        Eigen::Vector3d axis;  // in the frame of the standard setting
        double dfLeast;
    };
    const std::vector<Case> listCase = {
        {{5.1, 7.3, 9.8, 83, 97, 104}, 140, {1, 2, 3}, 140}, {{8, 8, 8, 90, 90, 90}, 85, {0, 0, 1}, 5},
        {{8, 8, 8, 90, 90, 90}, 60, {1, 1, 1}, 60},  // of the spinel law: no symmetry makes it less
        {{5, 5, 8, 90, 90, 120}, 67, {0, 0, 1}, 7},          {{6, 7, 9, 90, 105, 90}, 180, {1, 0, 0}, 180},
        {{6, 7, 9, 90, 105, 90}, 177, {0, 1, 0}, 3},
    };
    CSimulatedPoints points(21);
    Eigen::Matrix3d matOther;
    matOther << 1, 1, 0, 0, 1, -2, 0, 0, 1;  // another basis of the same lattice
    for (const Case& one : listCase) {
        const Eigen::Matrix3d matSetting = points.rotation();
        const LatticeBasis first = turned(*basisOfCell(one.cell), matSetting);
        const Eigen::Vector3d axis = matSetting * one.axis.normalized();
        const auto turn = turnBetween(first, matOther * turned(first, turnBy(one.dfTurn, axis)));
        ASSERT_TRUE(turn) << one.dfTurn;
        EXPECT_NEAR(turn->dfAngle, one.dfLeast, 1e-4) << one.dfTurn;
        EXPECT_LT(turn->dfMisfit, 1e-9);
        if (one.dfLeast < 10) {
            EXPECT_NEAR(std::abs(turn->axis.dot(axis)), 1, 1e-6);
        }
    }
    EXPECT_FALSE(turnBetween(*basisOfCell(g_orthorhombic), *basisOfCell({7.3, 9.1, 13.2, 90, 90, 90})));
    EXPECT_FALSE(turnBetween(LatticeBasis::Zero(), *basisOfCell(g_orthorhombic)));
}

TEST(FurtherLattices, ATwinIsFoundWithItsTurnAndItsPoints)
{
    CSimulatedPoints points(22);
    const LatticeBasis first = turned(*basisOfCell(g_orthorhombic), points.rotation());
    const Eigen::Vector3d axis = Eigen::Vector3d(1, 2, -2) / 3;
    const LatticeBasis second = turned(first, turnBy(37, axis));
    const LatticePoints listFirst = points.reflections(first, 0.8, 0.002, seen(0.6));
    const LatticePoints listSecond = points.reflections(second, 0.8, 0.002, seen(0.25));
    const LatticePoints listNoise = points.noise(300, 0.8);
    const auto found = findFurtherLattices(first, joined(joined(listFirst, listSecond), listNoise));
    ASSERT_EQ(found.listLattice.size(), 2U);
    ASSERT_TRUE(found.listLattice[1].turn);
    EXPECT_TRUE(isOneLattice(found.listLattice[1].matBasis, second));
    EXPECT_NEAR(found.listLattice[1].turn->dfAngle, 37, 0.3);
    EXPECT_NEAR(std::abs(found.listLattice[1].turn->axis.dot(axis)), 1, 1e-3);
    ASSERT_EQ(found.vecLabel.size(), listFirst.size() + listSecond.size() + listNoise.size());
    const auto itLabel = found.vecLabel.begin();
    const auto itSecond = itLabel + std::ptrdiff_t(listFirst.size());
    const auto itNoise = itSecond + std::ptrdiff_t(listSecond.size());
    EXPECT_GT(double(std::count(itLabel, itSecond, 0)), 0.9 * double(listFirst.size()));
    EXPECT_GT(double(std::count(itSecond, itNoise, 1)), 0.8 * double(listSecond.size()));
    EXPECT_GT(double(std::count(itNoise, found.vecLabel.end(), -1)), 0.8 * double(listNoise.size()));
    EXPECT_EQ(found.listLattice[1].nOwn, std::count(itLabel, found.vecLabel.end(), 1));
}

TEST(FurtherLattices, ANeighbourOfAnotherCellAndAThirdAreFound)
{
    CSimulatedPoints points(23);
    const LatticeBasis first = turned(*basisOfCell(g_orthorhombic), points.rotation());
    const LatticeBasis second = turned(*basisOfCell({5.2, 6.6, 8.4, 81, 95, 103}), points.rotation());
    const LatticeBasis third = turned(first, turnBy(8, {3, -1, 1}));
    const LatticePoints listPoint = joined(joined(points.reflections(first, 0.8, 0.002, seen(0.7)),
                                                  points.reflections(second, 0.9, 0.002, seen(0.6))),
                                           points.reflections(third, 0.8, 0.002, seen(0.4)));
    const auto found = findFurtherLattices(first, listPoint);
    ASSERT_EQ(found.listLattice.size(), 3U);
    int nOther = 0;
    for (size_t n = 1; n < 3; ++n) {
        const OneOfLattices& lattice = found.listLattice[n];
        nOther += isOneLattice(lattice.matBasis, second) && !lattice.turn ? 1 : 0;
        nOther += lattice.turn && std::abs(lattice.turn->dfAngle - 8) < 0.3 ? 10 : 0;
    }
    EXPECT_EQ(nOther, 11);
}

// Alone among much noise, or bent by an error of the geometry until its outer points fit no more, or with a
// superlattice of its own: in none of these is there a second crystal.
TEST(FurtherLattices, ASingleCrystalHasNoSecond)
{
    for (unsigned nSeed = 31; nSeed < 35; ++nSeed) {
        CSimulatedPoints points(nSeed);
        const LatticeBasis first = turned(*basisOfCell(g_orthorhombic), points.rotation());
        const LatticePoints listTrue = points.reflections(first, 0.8, 0.002, seen(0.6));
        const auto noisy = findFurtherLattices(first, joined(listTrue, points.noise(600, 0.8)));
        EXPECT_EQ(noisy.listLattice.size(), 1U) << nSeed;
        EXPECT_FALSE(noisy.listLattice.front().turn);
        LatticePoints listBent;
        for (const Eigen::Vector3d& point : listTrue) {
            Eigen::Vector3d index = first * point;
            index.x() += 0.7 * std::pow(index.x() / (0.8 * 7.3), 3);
            listBent.push_back(first.inverse() * index);
        }
        EXPECT_EQ(findFurtherLattices(refinedBasis(first, listBent, 0.2), listBent).listLattice.size(), 1U)
            << nSeed;
        LatticeBasis halved = first;
        halved.row(1) /= 2;
        EXPECT_EQ(findFurtherLattices(halved, listTrue).listLattice.size(), 1U) << nSeed;
    }
}

TEST(FurtherLattices, PointsAndBasesThatTellNothingAreBorne)
{
    CSimulatedPoints points(41);
    const LatticeBasis first = *basisOfCell(g_orthorhombic);
    EXPECT_TRUE(findFurtherLattices(first, {}).vecLabel.empty());
    EXPECT_EQ(findFurtherLattices(first, points.noise(5, 0.8)).listLattice.size(), 1U);
    EXPECT_EQ(findFurtherLattices(LatticeBasis::Zero(), points.noise(50, 0.8)).vecLabel,
              std::vector<int>(50, -1));
    LatticePoints listRow;
    for (int n = 0; n < 300; ++n) {
        listRow.emplace_back(0.03 * (n % 30), 0.011 * (n % 30), 0.001);
    }
    EXPECT_EQ(findFurtherLattices(first, listRow).listLattice.size(), 1U);
    int nAsked = 0;
    findFurtherLattices(first, points.noise(500, 0.8), {}, [&] { return ++nAsked > 10; });
    EXPECT_EQ(nAsked, 1);
}

}  // namespace
}  // namespace tessera
