// Supercells that the points left over demand, and cells whose reflections are absent in a pattern.
#include "lattice/cosets.h"

#include "tests/lattice/simulatedpoints.h"

#include <gtest/gtest.h>

#include <limits>

namespace tessera {
namespace {

LatticeBasis monoclinicBasis()
{
    LatticeBasis basis;
    basis << 8.1, 0, 0, 0, 9.3, 0, -2.9, 0, 10.4;
    return basis * Eigen::AngleAxisd(0.7, Eigen::Vector3d(1, 2, -1).normalized()).matrix();
}

/// Reflections of the first kind are all seen, others now and then.
CSimulatedPoints::FnSeen weakUnless(std::function<bool(int, int, int)> fnStrong, double dfWeak)
{
    return [=](int h, int k, int l) { return fnStrong(h, k, l) ? 0.8 : dfWeak; };
}

struct Superlattice {
    const char* pszName;
    std::function<bool(int, int, int)> fnStrong;  // the reflections of the small cell, in the large one
    Absence absence;                              // what makes the small cell out of the large one
    double dfVolumeRatio;
};

// The small cell is given, as a search finds it that most points satisfy.
TEST(Cosets, PointsLeftOverDemandTheSupercell)
{
    const std::vector<Superlattice> listCase = {
        {"halved axis", [](int h, int, int) { return h % 2 == 0; }, {{1, 0, 0}, 2, 0, 0, 0}, 2},
        {"body centred",
         [](int h, int k, int l) { return (h + k + l) % 2 == 0; },
         {{1, 1, 1}, 2, 0, 0, 0},
         2},
        {"third", [](int, int k, int l) { return (k + l) % 3 == 0; }, {{0, 1, 1}, 3, 0, 0, 0}, 3},
    };
    CSimulatedPoints points(1);
    const LatticeBasis large = monoclinicBasis();
    for (const Superlattice& one : listCase) {
        const LatticePoints listPoint = joined(
            points.reflections(large, 1.0, 0.002, weakUnless(one.fnStrong, 0.1)), points.noise(500, 1.0));
        const LatticeBasis small = subcell(large, one.absence);
        ASSERT_NEAR(large.determinant() / small.determinant(), one.dfVolumeRatio, 1e-6) << one.pszName;
        const auto listCoset = findCosets(small, listPoint);
        ASSERT_FALSE(listCoset.empty()) << one.pszName;
        EXPECT_TRUE(listCoset.front().bDemanded) << one.pszName;
        EXPECT_GT(listCoset.front().nPoints, 5 * listCoset.front().dfByChance) << one.pszName;
        EXPECT_TRUE(isOneLattice(supercell(small, listCoset.front()), large)) << one.pszName;
        const auto result = latticeAndCosets(small, listPoint);
        EXPECT_TRUE(isOneLattice(result.matBasis, large)) << one.pszName;
        EXPECT_EQ(result.listTaken.size(), 1U) << one.pszName;
        EXPECT_TRUE(result.listNamed.empty()) << one.pszName;
    }
    // Two steps: the strong reflections are those of a face-centred cell.
    const LatticePoints listFace = points.reflections(
        large, 1.0, 0.002,
        weakUnless([](int h, int k, int l) { return (h + k) % 2 == 0 && (k + l) % 2 == 0; }, 0.2));
    Eigen::Matrix3d matHalves;
    matHalves << 0, 0.5, 0.5, 0.5, 0, 0.5, 0.5, 0.5, 0;
    const auto result = latticeAndCosets(matHalves * large, listFace);
    EXPECT_TRUE(isOneLattice(result.matBasis, large));
    EXPECT_EQ(result.listTaken.size(), 2U);
}

// True primitive lattices with noise, and with an error that increases along one axis until indices deviate
// by a third and a half.
TEST(Cosets, NoiseAndErrorsOfTheGeometryDemandNothing)
{
    const LatticeBasis basis = monoclinicBasis();
    for (unsigned nSeed = 1; nSeed <= 5; ++nSeed) {
        CSimulatedPoints points(nSeed);
        const LatticePoints listTrue = points.reflections(basis, 0.9, 0.003, seen(0.7));
        EXPECT_TRUE(findCosets(basis, joined(listTrue, points.noise(2000, 0.9))).empty()) << nSeed;
        EXPECT_TRUE(findCosets(basis, points.noise(3000, 0.9)).empty()) << nSeed;
        for (const double dfDrift : {0.35, 0.5, 0.7}) {
            LatticePoints listDrifting;
            for (const Eigen::Vector3d& point : listTrue) {
                Eigen::Vector3d index = basis * point;
                index.x() += dfDrift * std::pow(index.x() / (0.9 * 8.1), 3);
                listDrifting.push_back(basis.inverse() * index);
            }
            const auto result = latticeAndCosets(basis, listDrifting);
            EXPECT_TRUE(result.listTaken.empty()) << nSeed << ' ' << dfDrift;
            EXPECT_TRUE(isOneLattice(result.matBasis, basis, 0.1)) << nSeed << ' ' << dfDrift;
            EXPECT_EQ(result.strCentring, QStringLiteral("P"));
        }
    }
}

TEST(Cosets, PeaksBetweenThatAreThereFarOutAloneAreNamed)
{
    const LatticeBasis large = monoclinicBasis();
    CSimulatedPoints points(4);
    const LatticePoints listPoint = points.reflections(large, 0.8, 0.002, [&](int h, int k, int l) {
        return h % 2 == 0 ? 0.8 : std::abs(k) > 4 && std::abs(l) > 4 ? 0.5 : 0;
    });
    const auto result = latticeAndCosets(subcell(large, {{1, 0, 0}, 2, 0, 0, 0}), listPoint);
    EXPECT_TRUE(result.listTaken.empty());
    ASSERT_FALSE(result.listNamed.empty());
    EXPECT_FALSE(result.listNamed.front().bDemanded);
    Coset coset;
    coset.anNumerator = {2, 1, 0};
    coset.nDenominator = 4;
    coset.dfShare = 0.114;
    EXPECT_EQ(cosetText(coset), QStringLiteral("11 % of the peaks lie at (1/2, 1/4, 0)"));
}

struct Centring {
    const char* pszName;
    std::function<bool(int, int, int)> fnAllowed;
    int nVolumeRatio;
};

TEST(Absences, NameTheCentringAndGiveThePrimitiveCell)
{
    const auto even = [](int n) { return n % 2 == 0; };
    const std::vector<Centring> listCase = {
        {"P", [](int, int, int) { return true; }, 1},
        {"P", [=](int, int k, int l) { return k != 0 || even(l); }, 1},  // a glide plane is no centring
        {"A", [=](int, int k, int l) { return even(k + l); }, 2},
        {"B", [=](int h, int, int l) { return even(h + l); }, 2},
        {"C", [=](int h, int k, int) { return even(h + k); }, 2},
        {"I", [=](int h, int k, int l) { return even(h + k + l); }, 2},
        {"F", [=](int h, int k, int l) { return even(h + k) && even(k + l); }, 4},
        {"R", [](int h, int k, int l) { return (-h + k + l) % 3 == 0; }, 3},
        {"R", [](int h, int k, int l) { return (h - k + l) % 3 == 0; }, 3},
        {"", [=](int h, int, int) { return even(h); }, 2},  // an axis too long
        {"", [](int, int, int l) { return l % 3 == 0; }, 3},
    };
    CSimulatedPoints points(5);
    const LatticeBasis basis = monoclinicBasis();
    for (const Centring& one : listCase) {
        const auto fnSeen = [&](int h, int k, int l) { return one.fnAllowed(h, k, l) ? 0.7 : 0; };
        const LatticePoints listPoint = joined(points.reflections(basis, 0.9, 0.002, fnSeen),
                                               points.noise(500, 0.9));
        const auto result = latticeAndCosets(basis, listPoint);
        EXPECT_EQ(result.strCentring.toStdString(), one.pszName) << one.nVolumeRatio;
        EXPECT_NEAR(basis.determinant() / result.matBasis.determinant(), one.nVolumeRatio, 0.02)
            << one.pszName;
        EXPECT_TRUE(result.listTaken.empty()) << one.pszName;
    }
}

// One reflection in fifty of the class is seen: it is weak, not absent. And twenty reflections tell nothing.
TEST(Absences, WeakReflectionsAndFewPointsAreNone)
{
    CSimulatedPoints points(6);
    const LatticeBasis basis = monoclinicBasis();
    const auto fnBody = [](int h, int k, int l) { return (h + k + l) % 2 == 0; };
    const auto listWeak = points.reflections(
        basis, 1.0, 0.002, [&](int h, int k, int l) { return fnBody(h, k, l) ? 0.8 : 0.02; });
    EXPECT_EQ(latticeAndCosets(basis, listWeak).strCentring, QStringLiteral("P"));
    const auto listFew = points.reflections(basis, 0.9, 0.002,
                                            [&](int h, int k, int l) { return fnBody(h, k, l) ? 0.02 : 0; });
    EXPECT_GT(listFew.size(), 5U);
    EXPECT_TRUE(findAbsences(basis, listFew).empty());
}

TEST(Cosets, PointsWithoutALatticeAndBasesThatAreNoneAreBorne)
{
    CSimulatedPoints points(7);
    const double dfNaN = std::numeric_limits<double>::quiet_NaN();
    LatticePoints listRow;
    LatticePoints listPlane;
    for (int n = 1; n < 400; ++n) {
        listRow.emplace_back(0.06 * (n % 20), 0, 0);
        listPlane.emplace_back(0.06 * (n % 20), 0.05 * (n / 20 % 20), 0);
    }
    const LatticePoints listBad = {{dfNaN, 0, 0}, {1e300, 1, 1}, {0, 0, 0}, {0.1, 0.2, 0.3}};
    for (const LatticePoints& listPoint :
         {LatticePoints(), listRow, listPlane, listBad, points.noise(5, 0.8)}) {
        for (const LatticeBasis& basis : {monoclinicBasis(), LatticeBasis(LatticeBasis::Zero()),
                                          LatticeBasis(LatticeBasis::Constant(dfNaN))}) {
            const auto result = latticeAndCosets(basis, listPoint);
            EXPECT_TRUE(result.listTaken.empty());
            EXPECT_EQ(result.strCentring, QStringLiteral("P"));
        }
    }
}

}  // namespace
}  // namespace tessera
