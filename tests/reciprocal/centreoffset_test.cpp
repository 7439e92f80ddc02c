// The fit of the direct beam on points made with a known error of the beam, by rotations written apart.
#include "reciprocal/centreoffset.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

/// Points of a lattice as a wrong beam shows them: each moved by the frame's image of the offset.
QList<Peak3D> movedLattice(double dfX, double dfY, double dfAxis, double dfNoise)
{
    const double aBasis[3][3] = {{0.1, 0.01, 0.02}, {-0.02, 0.09, 0.015}, {0.01, -0.03, 0.12}};
    const double dfPixel = 0.003;
    std::mt19937 random(7);
    QList<Peak3D> list;
    for (int h = -3; h <= 3; ++h) {
        for (int k = -3; k <= 3; ++k) {
            for (int l = -2; l <= 2; ++l) {
                const double dfTilt = -50 + double(random() % 1000) * 0.1;
                const double dfPhi = dfAxis * M_PI / 180, dfTheta = dfTilt * M_PI / 180;
                // The pattern turned by φ, then about x by θ.
                const double dfU = dfPixel * (std::cos(dfPhi) * dfX - std::sin(dfPhi) * dfY);
                const double dfV = dfPixel * (std::sin(dfPhi) * dfX + std::cos(dfPhi) * dfY);
                const double aMove[3] = {dfU, dfV * std::cos(dfTheta), dfV * std::sin(dfTheta)};
                double aPoint[3];
                for (int i = 0; i < 3; ++i) {
                    const double dfRandom = double(random() % 2001) / 1000 - 1;
                    aPoint[i] = h * aBasis[0][i] + k * aBasis[1][i] + l * aBasis[2][i] + aMove[i] + dfNoise * dfRandom;
                }
                Peak3D peak;
                peak.setHKL(h + 0.02, k - 0.03, l + 0.01);
                peak.setPoint({float(aPoint[0]), float(aPoint[1]), float(aPoint[2])});
                peak.dfFrameTilt = dfTilt;
                list.append(peak);
            }
        }
    }
    return list;
}

}  // namespace

TEST(CentreOffset, ComesBackWhateverTheAxis)
{
    for (double dfAxis : {0.0, 33.0, 90.0, -140.5}) {
        const CentreOffset offset = fitCentreOffset(movedLattice(1.7, -0.6, dfAxis, 0), 0.003, dfAxis);
        ASSERT_TRUE(offset.bValid);
        EXPECT_NEAR(offset.dfX, 1.7, 1e-4) << dfAxis;
        EXPECT_NEAR(offset.dfY, -0.6, 1e-4) << dfAxis;
    }
}

TEST(CentreOffset, HasHonestErrors)
{
    const CentreOffset offset = fitCentreOffset(movedLattice(0, 0, 33, 0.003), 0.003, 33);
    ASSERT_TRUE(offset.bValid);
    // Uniform noise of one pixel to each side: 1/sqrt(3) pixel on each of 245 points in 3 directions.
    EXPECT_GT(offset.dfErrorX, 0.577 / std::sqrt(245.0) * 0.7);
    EXPECT_LT(offset.dfErrorX, 0.577 / std::sqrt(245.0) * 2);
    EXPECT_LT(std::abs(offset.dfX), 3 * offset.dfErrorX);
    EXPECT_LT(std::abs(offset.dfY), 3 * offset.dfErrorY);
    EXPECT_NEAR(offset.dfRms, 0.003, 0.0003);
}

TEST(CentreOffset, SaysWhenTheDataDoNotTell)
{
    EXPECT_FALSE(fitCentreOffset({}, 0.003, 10).bValid);
    EXPECT_FALSE(fitCentreOffset(movedLattice(1, 1, 10, 0).mid(0, 5), 0.003, 10).bValid);
    QList<Peak3D> listRow = movedLattice(1, 1, 10, 0);
    for (Peak3D& peak : listRow) {
        peak.dfK = peak.dfL = 0;
    }
    EXPECT_FALSE(fitCentreOffset(listRow, 0.003, 10).bValid);
}
