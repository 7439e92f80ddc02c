// Centres of made-up spots.

#include "frames/spotcentres.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tessera {

namespace {

/// A Gaussian spot of that height on a sloping background.
void putSpot(CImgObj<float>& img, double dfX, double dfY, double dfHeight, double dfSigma, double dfNoise,
             std::mt19937& random)
{
    std::normal_distribution<double> normal;
    img.Create(64, 64);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x) {
            const double dfSquare = (x - dfX) * (x - dfX) + (y - dfY) * (y - dfY);
            img.Data()[y * 64 + x] = float(60 + 0.2 * x +
                                           dfHeight * std::exp(-dfSquare / (2 * dfSigma * dfSigma)) +
                                           dfNoise * normal(random));
        }
    }
}

}  // namespace

TEST(SpotCentre, liesWhereTheSpotIs)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<double> place(30, 34);
    CImgObj<float> img;
    double dfWorst = 0, dfSquares = 0;
    const int nSpots = 200;
    for (int n = 0; n < nSpots; ++n) {
        const double dfX = place(random), dfY = place(random);
        const QPointF ptHunted(std::round(dfX), std::round(dfY));
        putSpot(img, dfX, dfY, 500, 1.5, 0, random);
        const std::optional<QPointF> exact = spotCentre(img, ptHunted, 1.5);
        ASSERT_TRUE(exact);
        dfWorst = std::max(dfWorst, std::hypot(exact->x() - dfX, exact->y() - dfY));
        // The width need not be known exactly.
        putSpot(img, dfX, dfY, 100, 1.5, 5, random);
        const std::optional<QPointF> noisy = spotCentre(img, ptHunted + QPointF(0.5, 0), 1.8);
        ASSERT_TRUE(noisy);
        dfSquares += std::pow(noisy->x() - dfX, 2) + std::pow(noisy->y() - dfY, 2);
    }
    EXPECT_LT(dfWorst, 0.02);
    // Hunted pixels have 0.29 per coordinate.
    EXPECT_LT(std::sqrt(dfSquares / (2 * nSpots)), 0.1);
}

TEST(SpotCentre, noneWhereThereIsNoSpot)
{
    std::mt19937 random(2);
    CImgObj<float> img;
    putSpot(img, 32, 32, 500, 1.5, 0, random);
    EXPECT_TRUE(spotCentre(img, QPointF(33, 32), 1.5));
    EXPECT_FALSE(spotCentre(img, QPointF(36, 32), 1.5)) << "too far";
    EXPECT_FALSE(spotCentre(img, QPointF(2, 32), 1.5)) << "at the edge";
    EXPECT_FALSE(spotCentre(img, QPointF(-1e9, std::nan("")), 1.5));
    EXPECT_FALSE(spotCentre(img, QPointF(33, 32), 0));
    putSpot(img, 32, 32, -50, 1.5, 0, random);
    EXPECT_FALSE(spotCentre(img, QPointF(32, 32), 1.5)) << "below its background";
}

}  // namespace tessera
