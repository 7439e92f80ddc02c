// Places, distances and rings of a frame against the formulas of diffraction.
#include "reciprocal/framereading.h"
#include "reciprocal/resolutionrings.h"
#include "records/pi.h"

#include <gtest/gtest.h>

#include <QLineF>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfDegree = g_dfPi / 180;
const double g_dfLambda = 0.0251;  // Å
const double g_dfPixel = 0.002;    // Å⁻¹

/// Three frames of 1000 × 800 pixels; the beam of the second one at (480, 410), its tilt 20°.
DataSet series()
{
    DataSet data;
    data.m_dfWavelength = g_dfLambda;
    data.m_dfPixelSize = g_dfPixel;
    data.m_dfRotationAxis = 30;
    data.m_dfCenterX = 478;
    data.m_dfCenterY = 411;
    data.m_listShift = {{0, 0}, {2, -1}, {3, 5}};
    data.m_listOverallTilt = {0, 20, 40};
    data.m_listCell = {{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}};
    return data;
}

/// A place so many pixels from that beam, at an angle to the axis, counter-clockwise on the screen.
QPointF place(double dfPixels, double dfFromAxis)
{
    const double df = (30 + dfFromAxis) * g_dfDegree;
    return {480 + dfPixels * std::cos(df), 410 - dfPixels * std::sin(df)};
}

/// Bragg: tan 2θ = r λ, d* = 2 sin θ / λ.
double dStar(double dfPixels)
{
    return 2 / g_dfLambda * std::sin(std::atan(dfPixels * g_dfPixel * g_dfLambda) / 2);
}

}  // namespace

TEST(FrameReading, PlacesByBragg)
{
    DataSet data = series();
    for (double dfAngle : {0.0, 37.0, 90.0}) {
        for (double dfPixels : {50.0, 400.0}) {
            const auto reading = readFramePlace(data, true, 1, place(dfPixels, dfAngle));
            ASSERT_TRUE(reading);
            EXPECT_NEAR(reading->dfDStar, dStar(dfPixels), 1e-7);
            EXPECT_NEAR(reading->dfAxisAngle, dfAngle, 1e-4);
            // x is along the axis, whatever the tilt: what the flat pattern has there, times cos θ.
            const double dfTheta = std::atan(dfPixels * g_dfPixel * g_dfLambda) / 2;
            ASSERT_TRUE(reading->indices);
            EXPECT_NEAR((*reading->indices)[0],
                        10 * dStar(dfPixels) * std::cos(dfTheta) * std::cos(dfAngle * g_dfDegree), 1e-5);
            EXPECT_NEAR(std::hypot((*reading->indices)[0], (*reading->indices)[1], (*reading->indices)[2]),
                        10 * dStar(dfPixels), 1e-5);
        }
    }
    // Opposite places: their points are as far apart as both are from the beam's line, sin 2θ / λ.
    const auto distance = distanceOnFrame(data, true, 1, place(300, 60), place(300, -120));
    ASSERT_TRUE(distance);
    EXPECT_NEAR(distance->dfPixels, 600, 1e-9);
    EXPECT_NEAR(distance->dfReciprocal, 2 / g_dfLambda * std::sin(std::atan(300 * g_dfPixel * g_dfLambda)),
                1e-6);

    data.m_listCell.clear();
    EXPECT_FALSE(readFramePlace(data, true, 1, place(50, 0))->indices);
    EXPECT_FALSE(readFramePlace(data, true, 3, place(50, 0))) << "without a shift";
    data.m_listOverallTilt.removeLast();
    EXPECT_FALSE(readFramePlace(data, true, 2, place(50, 0))) << "without a tilt";
    data.m_dfWavelength = 0;
    EXPECT_FALSE(readFramePlace(data, true, 1, place(50, 0)));
    EXPECT_FALSE(distanceOnFrame(data, true, 1, place(50, 0), place(60, 0)));
}

TEST(ResolutionRings, OneTwoFiveAndTheLimit)
{
    const std::pair<double, std::vector<double>> aCase[] = {{1.6, {5, 2, 1, 0.625}},
                                                            {0.5, {10, 5, 2}},
                                                            {0.99, {5, 2, 1 / 0.99}},
                                                            {0.025, {200, 100, 50, 40}},
                                                            {0, {}},
                                                            {NAN, {}},
                                                            {INFINITY, {}}};
    for (const auto& each : aCase) {
        const std::vector<double> vecSpacing = ringSpacings(each.first);
        ASSERT_EQ(vecSpacing.size(), each.second.size()) << each.first;
        for (size_t i = 0; i < vecSpacing.size(); ++i) {
            EXPECT_NEAR(vecSpacing[i], each.second[i], 1e-12 * each.second[i]) << each.first;
        }
    }
    EXPECT_FALSE(flatRadius(60, g_dfLambda)) << "sideways";
    EXPECT_FALSE(flatRadius(1, 0));
    EXPECT_NEAR(*flatRadius(dStar(300), g_dfLambda), 300 * g_dfPixel, 1e-12);
}

// The last one touches the farthest edge, to the right at column 999.5.
TEST(ResolutionRings, AreRoundWithoutALens)
{
    const DataSet data = series();
    const QSize size(1000, 800);
    std::vector<ResolutionRing> vecRing = resolutionRings(data, false, 1, size, 100);
    ASSERT_EQ(vecRing.size(), 3u) << "5 and 2 Å, and no 1 Å beside the last";
    EXPECT_NEAR(1 / vecRing.back().dfSpacing, dStar(519.5), 1e-6);
    for (const QPointF& pt : vecRing.back().polygon) {
        EXPECT_NEAR(QLineF(pt, {480, 410}).length(), 519.5, 1e-3);
    }
    // A limit that comes before.
    vecRing = resolutionRings(data, false, 1, size, 0.5);
    EXPECT_EQ(vecRing.back().dfSpacing, 2);
    EXPECT_TRUE(resolutionRings(data, true, 3, size, 100).empty()) << "without a shift";
}

// The radius is divided by 1 + 0.05 cos(2φ), φ from the azimuth of the stretching.
TEST(ResolutionRings, AreStretched)
{
    DataSet data = series();
    const QSize size(1000, 800);
    data.m_dfStretchAmplitude = 5;
    data.m_dfStretchAzimuth = 20;
    const std::vector<ResolutionRing> vecRing = resolutionRings(data, true, 1, size, 0.5);
    double dfLeast = 1e9, dfMost = 0;
    for (const QPointF& pt : vecRing.back().polygon) {
        const double df = QLineF(pt, {480, 410}).length();
        dfLeast = std::min(dfLeast, df);
        dfMost = std::max(dfMost, df);
    }
    const double dfRound = *flatRadius(0.5, g_dfLambda) / g_dfPixel;
    EXPECT_NEAR(dfLeast, dfRound / 1.05, 0.05);
    EXPECT_NEAR(dfMost, dfRound / 0.95, 0.05);
}

TEST(ResolutionRings, AreReadBackAsTheirSpacingWhateverTheLensDoes)
{
    DataSet data = series();
    const QSize size(1000, 800);
    data.m_dfStretchAmplitude = 5;
    data.m_dfStretchAzimuth = 20;
    data.m_distortion.dfEllipseAmplitude = 2;
    data.m_distortion.dfThirdOrderRadial = -1.5;
    data.m_distortion.dfThirdOrderSpiral = 1;
    data.m_distortion.dfParabolicAmplitude = 1;
    data.m_distortion.dfParabolicAzimuth = 70;
    const std::vector<ResolutionRing> vecRing = resolutionRings(data, true, 1, size, 100);
    ASSERT_GE(vecRing.size(), 3u);
    for (const ResolutionRing& ring : vecRing) {
        for (const QPointF& pt : ring.polygon) {
            EXPECT_NEAR(readFramePlace(data, true, 1, pt)->dfDStar * ring.dfSpacing, 1, 2e-6);
        }
        ASSERT_TRUE(ring.ptText);
        EXPECT_TRUE(QRectF(-0.5, -0.5, 1000, 800).contains(*ring.ptText));
    }
}

}  // namespace tessera
