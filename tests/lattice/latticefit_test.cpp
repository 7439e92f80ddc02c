// Bases of direct space, and the share of points that fit them.
#include "lattice/latticefit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tessera {
namespace {

LatticeBasis skewedBasis()
{
    LatticeBasis basis;
    basis << 5.1, 0.3, -0.2, 1.4, 7.3, 0.4, -2.0, 0.9, 9.8;
    return basis;
}

TEST(LatticeFit, ShortestBasisIsThatOfTheSameLatticeAndRightHanded)
{
    const LatticeBasis basis = shortestBasis(skewedBasis());
    Eigen::Matrix3d matMix;
    matMix << 1, 3, -2, 0, 1, 4, 0, 0, -1;  // integers, determinant -1: the other hand
    const LatticeBasis found = shortestBasis(matMix * basis);
    const Eigen::Matrix3d matChange = found * basis.inverse();
    EXPECT_LT((matChange - matChange.array().round().matrix()).norm(), 1e-9);
    EXPECT_NEAR(found.determinant(), basis.determinant(), 1e-9);
    for (int n = 0; n < 3; ++n) {
        EXPECT_NEAR(found.row(n).norm(), basis.row(n).norm(), 1e-9);
    }
    EXPECT_NEAR((latticeBasisOf(reciprocalBasisOf(basis)) - basis).norm(), 0, 1e-5);
}

// Of points spread at random over a large ball each index is uniform, so chance is the cube of twice the
// tolerance; close to the origin any orientation of the cell has them within the tolerance.
TEST(LatticeFit, ChanceIsTheCubeFarOutAndCertaintyNearTheOrigin)
{
    const LatticeBasis basis = skewedBasis();
    std::mt19937 random(3);
    std::uniform_real_distribution<double> uniform(-1, 1);
    LatticePoints listFar;
    LatticePoints listNear;
    LatticePoints listOwn;
    const Eigen::Matrix3d matReciprocal = basis.inverse();
    for (int n = 0; n < 2000; ++n) {
        const Eigen::Vector3d v(uniform(random), uniform(random), uniform(random));
        listFar.push_back(3 * v);
        listNear.push_back(0.01 * v);
        listOwn.push_back(matReciprocal * (9 * v).array().round().matrix() + 0.002 * v);
    }
    EXPECT_NEAR(fitOfLattice(basis, listFar).dfByChance, 0.064, 0.004);
    EXPECT_NEAR(fitOfLattice(basis, listFar).share(), 0.064, 0.02);
    EXPECT_EQ(fitOfLattice(basis, listNear).dfByChance, 1);
    EXPECT_EQ(fitOfLattice(basis, listOwn).share(), 1);
    EXPECT_LT(fitOfLattice(basis, listOwn).dfByChance, 0.1);
    const LatticeBasis off = basis * Eigen::AngleAxisd(0.01, Eigen::Vector3d(1, 2, 3).normalized()).matrix() *
                             1.003;
    const LatticeBasis refined = refinedBasis(off, listOwn, g_dfLatticeTolerance);
    EXPECT_LT((refined - basis).norm() / basis.norm(), 2e-3);
    EXPECT_EQ(fitOfLattice(basis, {}).share(), 0);
}

}  // namespace
}  // namespace tessera
