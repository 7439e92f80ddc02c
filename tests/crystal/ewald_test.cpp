#include "crystal/ewald.h"

#include "crystal/reflectionfilter.h"
#include "geometry/placecorrection.h"
#include "tests/crystal/testreflection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tessera {

namespace {

const double g_dfRadians = std::acos(-1.0) / 180;

// A point on the sphere about (0, 0, -1/λ) of frame `nFrame`, from two angles rather than by matrices: the
// scattering angle, and the azimuth against the rotation axis. Its pixel lies on the line from (0, 0, 1/λ).
Peak3D peakOnSphere(double dfTwoTheta, double dfAzimuth, const FramePositionGeometry& g, int nFrame)
{
    const double dfK = 1 / g.dfWavelength;
    const double dfFlat = dfK * std::sin(dfTwoTheta), dfDepth = dfK * (1 - std::cos(dfTwoTheta));
    const double v = dfFlat * std::sin(dfAzimuth), dfRadius = std::hypot(v, dfDepth);
    const double dfTurn = std::atan2(-dfDepth, v) + g.listOverallTilt[nFrame] * g_dfRadians;
    const double dfPixels = dfFlat * dfK / (dfK + dfDepth) / g.dfPixelSize;
    const double dfOnFrame = dfAzimuth - g.dfRotationAxis * g_dfRadians;
    Peak3D peak;
    peak.setPoint({float(dfFlat * std::cos(dfAzimuth)), float(dfRadius * std::cos(dfTurn)),
                   float(dfRadius * std::sin(dfTurn))});
    const QPointF ptBeam = frameCentre(g.centres, nFrame);
    peak.dfX2D = ptBeam.x() + dfPixels * std::cos(dfOnFrame);
    peak.dfY2D = ptBeam.y() + dfPixels * std::sin(dfOnFrame);
    peak.nFrame = nFrame;
    return peak;
}

FramePositionGeometry geometryOfSeries()
{
    FramePositionGeometry g;
    for (int n = 0; n < 121; ++n) {
        g.listOverallTilt.append(-60 + n);
        g.centres.m_listShift.append(QPointF(0.3 * n, -0.1 * n));
    }
    g.centres.m_dfCenterX = 511.5;
    g.centres.m_dfCenterY = 498.25;
    g.dfRotationAxis = 37.4;
    g.dfPixelSize = 0.002;
    return g;
}

}  // namespace

// Solutions of the condition by acos about its maximum, in radians; where both lie inside ±π/2 the
// lower one was found first.
TEST(EwaldTilt, TheChoiceOfTheSolution)
{
    const struct {
        double dfLambda;
        Vec3D g;
        double dfTilt;
    } aRow[] = {{0.0251, {0.3f, -0.5f, 0}, -0.0085341036},      // without a z
                {0.0251, {0.3f, -0.5f, 0.2f}, -0.3893623035},   // the first
                {0.0251, {0.3f, 0.5f, 0.2f}, 0.3893623035},     // the second
                {1.5406, {0.1f, 0.05f, -0.4f}, -1.1105332373},  // both inside
                {0.0251, {0.6f, 0, 0.5f}, 1.5861079251}};       // none inside
    for (const auto& row : aRow) {
        double dfTilt = 0;
        ASSERT_TRUE(calEwaldTilt(row.dfLambda, row.g, dfTilt));
        EXPECT_NEAR(dfTilt, row.dfTilt, 1e-6);
    }
    EXPECT_EQ(calClosestFrame(-90, {3, -4, 5, -4}), 1);
    EXPECT_EQ(calClosestFrame(0, {}), -1);
}

// Points made by turning one of the sphere about an axis out of the plane: the tilt, and the pixel that the
// distorting lens puts it at.
TEST(FramePosition, KnowsALensAndAnAxisOutOfThePlane)
{
    FramePositionGeometry g = geometryOfSeries();
    g.distortion = {1.5, 40, 3, -0.8, 0.7, 130, 400, 3};
    const CPlaceCorrection correction({}, g.distortion);
    QList<Peak3D> list;
    QList<QPointF> listTruth;
    for (int n = 20; n < 100; ++n) {
        const Peak3D atZero = peakOnSphere(0.012, 0.5 + 0.02 * n, g, 60);
        list.append(reflection(1, 2, 3));
        list.last().setPoint(rotated(rotationAboutAxis(-60 + n, 3), atZero.point()));
        const QPointF ptFlat = QPointF(atZero.dfX2D, atZero.dfY2D) - frameCentre(g.centres, 60);
        listTruth.append(correction.putBack(ptFlat).value() + frameCentre(g.centres, n));
    }
    CRecordingReport report;
    ASSERT_TRUE(calFramePosition(list, g, report));
    for (int n = 0; n < list.size(); ++n) {
        EXPECT_NEAR(list[n].dfFrameTilt, n - 40, 2e-3);
        EXPECT_NEAR(list[n].dfX2D, listTruth[n].x(), 5e-3);
        EXPECT_NEAR(list[n].dfY2D, listTruth[n].y(), 5e-3);
    }
    g.distortion.dfThirdOrderRadial = 1e6;
    EXPECT_FALSE(calFramePosition(list, g, report));
    EXPECT_TRUE(report.said("The distortion leaves reflection (1.000,2.000,3.000) no place."));
}

TEST(FramePosition, FindsFrameTiltAndPixelOfAPointOnTheSphere)
{
    const FramePositionGeometry g = geometryOfSeries();
    QList<Peak3D> listTruth, list;
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> uniform(0, 1);
    for (int n = 0; n < 500; ++n) {
        // Off the axis by 0.1 Å⁻¹ or more: nearer, a second tilt in reach cuts the point as well.
        const double dfFlat = 0.2 + uniform(generator),
                     dfAzimuth = std::asin(0.1 / dfFlat) + uniform(generator);
        listTruth.append(
            peakOnSphere(std::asin(dfFlat * g.dfWavelength), n % 2 ? dfAzimuth : -dfAzimuth, g, n % 121));
        list.append(reflection(-1, 0.5, 2));
        list.last().setPoint(listTruth.last().point());
    }
    CRecordingReport report;
    ASSERT_TRUE(calFramePosition(list, g, report));
    for (int n = 0; n < list.size(); ++n) {
        const Peak3D& truth = listTruth[n];
        EXPECT_EQ(list[n].nFrame, truth.nFrame);
        EXPECT_NEAR(list[n].dfFrameTilt, g.listOverallTilt[truth.nFrame], 1e-3);
        EXPECT_LT(std::hypot(list[n].dfX2D - truth.dfX2D, list[n].dfY2D - truth.dfY2D), 5e-3);
    }
    list[0].nFrame = -7;
    list[1].setPoint({0.3f, 0, 0});  // on the axis
    EXPECT_FALSE(calFramePosition(list, g, report));
    EXPECT_EQ(report.m_listLine, QStringList{"Reflection (-1.000,0.500,2.000) is not cut by Ewald sphere."});
    EXPECT_EQ(list[0].nFrame, -7);
}

TEST(FilterReflections, KeepsStrongOnesAwayFromTheAxis)
{
    FramePositionGeometry g = geometryOfSeries();
    g.dfRotationAxis = 0;
    const struct {
        double dfAway, dfIntensity, dfFrameFit;
        double dfTiltFit;  // 0: left out
    } aRow[] = {{150, 600, 11.5, -49.5}, {-150, 600, 2, -59}, {99, 600, 11, 0},
                {150, 500, 11, 0},       {150, 600, 13, 0},   {150, 600, 12.9, -48.1}};
    for (const auto& row : aRow) {  // the test on the fitted frame has no absolute value
        Peak3D peak = reflection(1, 1, 1, row.dfIntensity);
        peak.nFrame = 10;
        peak.dfX2D = 700;
        peak.dfY2D = frameCentre(g.centres, 10).y() + row.dfAway;
        peak.dfFrameFit = row.dfFrameFit;
        peak.dfFrameTilt = -50;
        CRecordingReport report;
        const QList<Peak3D> listKept = filterReflections({peak}, 100, 500, g, report);
        EXPECT_NEAR(listKept.value(0).dfTiltFit, row.dfTiltFit, 1e-12);
        EXPECT_EQ(report.marked(), QStringList(QString("Filtering gvecPeak: %1 remained after filtering 1 "
                                                       "reflections with dRA=100 and Int=500.")
                                                   .arg(row.dfTiltFit < 0)));
    }
}

}  // namespace tessera
