// The direction search against cells that are known: reduced cells are compared.
#include "lattice/directionsearch.h"

#include "geometry/angles.h"
#include "lattice/cellreduction.h"
#include "lattice/directionlengths.h"

#include <gtest/gtest.h>

#include <gemmi/unitcell.hpp>

#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace tessera {
namespace {

std::array<double, 6> reducedCell(const LatticeBasis& basis)
{
    return cellOf(niggliBasis(basis)).numbers();
}

LatticeBasis turnedCell(const std::array<double, 6>& cell, std::mt19937& random)
{
    std::normal_distribution<double> normal;
    const gemmi::Mat33 m = gemmi::UnitCell(cell[0], cell[1], cell[2], cell[3], cell[4], cell[5]).orth.mat;
    LatticeBasis basis;  // the columns of the library's matrix are a, b, c
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            basis(i, j) = m[j][i];
        }
    }
    const Eigen::Quaterniond turn(normal(random), normal(random), normal(random), normal(random));
    return basis * turn.normalized().toRotationMatrix();
}

struct Cloud {
    double dfReach = 0.6;    ///< Å⁻¹
    double dfPart = 1;       ///< of the reflections that are there
    double dfError = 0.001;  ///< Å⁻¹, sigma along each axis
    double dfMissing = 30;   ///< degrees: half angle of the cone round x that no tilt reaches
    double dfForeign = 0;    ///< points anywhere, by those of the lattice
};

LatticePoints pointsOf(const LatticeBasis& basis, const Cloud& cloud, std::mt19937& random)
{
    std::normal_distribution<double> error(0, cloud.dfError);
    std::uniform_real_distribution<double> uniform(0, 1);
    const Eigen::Matrix3d matReciprocal = basis.inverse();
    const Eigen::Vector3i most = (basis.rowwise().norm() * cloud.dfReach).cast<int>();
    LatticePoints listPoint;
    for (int h = -most.x(); h <= most.x(); ++h) {
        for (int k = -most.y(); k <= most.y(); ++k) {
            for (int l = -most.z(); l <= most.z(); ++l) {
                const Eigen::Vector3d q = matReciprocal * Eigen::Vector3d(h, k, l);
                const bool bReached = q.norm() > 0.02 && q.norm() < cloud.dfReach &&
                                      std::abs(q.x()) < std::cos(radians(cloud.dfMissing)) * q.norm();
                if (bReached && uniform(random) < cloud.dfPart) {
                    listPoint.push_back(q + Eigen::Vector3d(error(random), error(random), error(random)));
                }
            }
        }
    }
    const int nForeign = int(cloud.dfForeign * double(listPoint.size()));
    for (int n = 0; n < nForeign; ++n) {
        listPoint.push_back(cloud.dfReach *
                            (Eigen::Vector3d(uniform(random), uniform(random), uniform(random)) -
                             Eigen::Vector3d::Constant(0.5)));
    }
    std::shuffle(listPoint.begin(), listPoint.end(), random);
    return listPoint;
}

void expectCell(const LatticeBasis& found, const LatticeBasis& truth, const std::string& strWhat)
{
    const std::array<double, 6> aFound = reducedCell(found);
    const std::array<double, 6> aTruth = reducedCell(truth);
    EXPECT_GT(found.determinant(), 0) << strWhat;
    for (std::size_t n = 0; n < 3; ++n) {
        EXPECT_NEAR(aFound[n], aTruth[n], 0.005 * aTruth[n]) << strWhat;
        EXPECT_NEAR(aFound[n + 3], aTruth[n + 3], 1) << strWhat;
    }
    EXPECT_NEAR(found.determinant(), std::abs(truth.determinant()), 0.01 * std::abs(truth.determinant()))
        << strWhat;
}

// Angles between 70° and 110° so that each cell is one; the reduced cells are compared, not the edges.
TEST(DirectionSearch, FindsTriclinicCellsInAnyOrientation)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> uniform(0, 1);
    for (int n = 0; n < 12; ++n) {
        std::array<double, 6> cell;
        for (std::size_t i = 0; i < 3; ++i) {
            cell[i] = 4 + 18 * uniform(random);
            cell[i + 3] = 70 + 40 * uniform(random);
        }
        const LatticeBasis truth = turnedCell(cell, random);
        Cloud cloud;
        cloud.dfReach = 0.8;
        cloud.dfPart = n % 2 == 0 ? 0.9 : 0.4;
        cloud.dfForeign = n % 3 == 0 ? 0.3 : 0;
        DirectionSearchOptions options;
        options.dfLongest = 40;
        options.nDirections = 6000;
        const LatticePoints listPoint = pointsOf(truth, cloud, random);
        const std::optional<DirectionLattice> found = searchDirections(listPoint, options);
        const std::string strCase = "cell " + std::to_string(n) + " of " + std::to_string(listPoint.size());
        ASSERT_TRUE(found) << strCase;
        expectCell(found->matBasis, truth, strCase);
        EXPECT_EQ(found->dfVolume, found->matBasis.determinant());
        EXPECT_LE(found->nFitting, int(listPoint.size()));
        EXPECT_GT(found->nFitting, 0.7 * double(listPoint.size()));
    }
}

TEST(DirectionSearch, FindsCentredAndLargeCellsOnAnyNumberOfThreads)
{
    std::mt19937 random(11);
    const LatticeBasis large = turnedCell({79.1, 79.1, 37.9, 90, 90, 90}, random);
    Cloud cloud;
    cloud.dfReach = 0.3;
    cloud.dfPart = 0.15;
    const LatticePoints listPoint = pointsOf(large, cloud, random);
    DirectionSearchOptions options;
    const std::optional<DirectionLattice> one = searchDirections(listPoint, options);
    options.nJobs = 3;
    const std::optional<DirectionLattice> three = searchDirections(listPoint, options);
    ASSERT_TRUE(one);
    ASSERT_TRUE(three);
    expectCell(one->matBasis, large, "large");
    EXPECT_EQ(one->matBasis, three->matBasis);
    EXPECT_EQ(one->nFitting, three->nFitting);

    // Body-centred: the primitive cell has half the volume.
    const LatticeBasis cubic = turnedCell({12, 12, 12, 90, 90, 90}, random);
    Eigen::Matrix3d matPrimitive;
    matPrimitive << -0.5, 0.5, 0.5, 0.5, -0.5, 0.5, 0.5, 0.5, -0.5;
    const LatticeBasis primitive = matPrimitive * cubic;
    options.dfLongest = 20;
    cloud.dfReach = 0.8;
    const std::optional<DirectionLattice> centred = searchDirections(pointsOf(primitive, cloud, random),
                                                                     options);
    ASSERT_TRUE(centred);
    expectCell(centred->matBasis, primitive, "centred");
}

// Points without a lattice, or too few of them, give no cell rather than a false one.
TEST(DirectionSearch, PointsThatAreNotFiniteAreLeftOut)
{
    LatticePoints listPoint;
    for (int n = -5; n <= 5; ++n) {
        listPoint.push_back({0.1 * n, 0.05 * n, 0});
    }
    DirectionSearchOptions options;
    options.nDirections = 100;
    const auto goOn = [] { return true; };
    const std::vector<Eigen::Vector3d> vecClean = strongestLengths(listPoint, 0.6, options, goOn);
    for (const double df : {std::numeric_limits<double>::quiet_NaN(), HUGE_VAL, -1e300}) {
        listPoint.insert(listPoint.begin(), Eigen::Vector3d(0, df, 0.1));
    }
    ASSERT_EQ(vecClean.size(), 100u);
    EXPECT_EQ(strongestLengths(listPoint, 0.6, options, goOn), vecClean);
}

/// Points of a lattice, and random numbers that belong to no lattice.
struct PointsOfALattice : testing::Test {
    PointsOfALattice()
    {
        options.dfLongest = 30;
        options.nDirections = 3000;
    }

    const double dfNan = std::numeric_limits<double>::quiet_NaN();
    std::mt19937 random{5};
    const LatticeBasis basis = turnedCell({9, 11, 14, 85, 97, 103}, random);
    const LatticePoints listLattice = pointsOf(basis, Cloud(), random);
    const LatticePoints listNan = LatticePoints(100, Eigen::Vector3d(dfNan, 0, 1));
    const LatticePoints listHuge = LatticePoints(100, Eigen::Vector3d(1e300, -1e300, 1e300));
    DirectionSearchOptions options;
};

TEST_F(PointsOfALattice, AreNeededForADirection)
{
    std::uniform_real_distribution<double> uniform(-0.6, 0.6);
    const Eigen::Matrix3d matReciprocal = basis.inverse();
    LatticePoints listRow;
    LatticePoints listPlane;
    LatticePoints listRough;
    LatticePoints listNoise;
    for (int n = 0; n < 400; ++n) {
        const int h = n % 20 - 10;
        const int k = n / 20 - 10;
        const Eigen::Vector3d noise(uniform(random), uniform(random), uniform(random));
        listRow.push_back(matReciprocal * Eigen::Vector3d(h, 0, 0));
        listPlane.push_back(matReciprocal * Eigen::Vector3d(h, k, 0));
        listRough.push_back(listPlane.back() + 0.002 * noise);
        listNoise.push_back(noise);
    }
    const LatticePoints listFew(listLattice.begin(), listLattice.begin() + 5);
    const LatticePoints listOrigin(100, Eigen::Vector3d::Zero());
    const LatticePoints aList[] = {{},      listRow, listPlane,  listRough, listNoise,
                                   listFew, listNan, listOrigin, listHuge};
    for (const LatticePoints& listPoint : aList) {
        EXPECT_FALSE(searchDirections(listPoint, options)) << &listPoint - aList;
    }
}

TEST_F(PointsOfALattice, AreSearchedWithinARangeAndUntilAStop)
{
    DirectionSearchOptions empty = options;
    empty.dfShortest = 50;
    EXPECT_FALSE(searchDirections(listLattice, empty));
    empty.dfLongest = dfNan;
    EXPECT_FALSE(searchDirections(listLattice, empty));
    int nAsked = 0;
    EXPECT_FALSE(searchDirections(listLattice, options, [&] { return ++nAsked < 3; }));
    EXPECT_EQ(nAsked, 4);  // twice each in its two parts, which end by themselves
}

TEST_F(PointsOfALattice, AreFoundAmongNumbersThatAreNone)
{
    LatticePoints listMixed = listLattice;
    listMixed.insert(listMixed.begin(), listNan.begin(), listNan.end());
    listMixed.insert(listMixed.end(), listHuge.begin(), listHuge.end());
    const std::optional<DirectionLattice> found = searchDirections(listMixed, options);
    ASSERT_TRUE(found);
    expectCell(found->matBasis, basis, "mixed");
}

}  // namespace
}  // namespace tessera
