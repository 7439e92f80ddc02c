#include "crystal/ewald.h"

#include "crystal/reflectionfilter.h"
#include "crystal/testreflection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

const double g_dfPi = std::acos(-1.0);

struct Truth {
    Vec3D vecPoint;
    double dfX, dfY;  // raw pixels
    int nFrame;
};

// A point on the sphere about (0, 0, -1/λ) of frame `nFrame`, from two angles rather than by matrices: the
// scattering angle, and the azimuth against the rotation axis. Its pixel lies on the line from (0, 0, 1/λ).
Truth truthOf(double dfTwoTheta, double dfAzimuth, const FramePositionGeometry& g, int nFrame)
{
    const double dfK = 1 / g.dfWavelength;
    const double dfFlat = dfK * std::sin(dfTwoTheta), dfDepth = dfK * (1 - std::cos(dfTwoTheta));
    const double v = dfFlat * std::sin(dfAzimuth), dfRadius = std::hypot(v, dfDepth);
    const double dfTurn = std::atan2(-dfDepth, v) + g.listOverallTilt[nFrame] * g_dfPi / 180;
    const double dfPixels = dfFlat * dfK / (dfK + dfDepth) / g.dfPixelSize;
    const double dfOnFrame = dfAzimuth - g.dfRotationAxis * g_dfPi / 180;
    return {{float(dfFlat * std::cos(dfAzimuth)), float(dfRadius * std::cos(dfTurn)),
             float(dfRadius * std::sin(dfTurn))},
            g.centres.m_dfCenterX + g.centres.m_listShift[nFrame].x() + dfPixels * std::cos(dfOnFrame),
            g.centres.m_dfCenterY + g.centres.m_listShift[nFrame].y() + dfPixels * std::sin(dfOnFrame),
            nFrame};
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
    } aRow[] = {{0.0251, {0.3f, 0.5f, 0}, 0.0085341036},  // without a z
                {0.0251, {0.3f, -0.5f, 0}, -0.0085341036},
                {0.0251, {0.3f, -0.5f, 0.2f}, -0.3893623035},  // the first
                {0.0251, {0.3f, 0.5f, -0.2f}, -0.3716504507},
                {0.0251, {0.3f, 0.5f, 0.2f}, 0.3893623035},  // the second
                {0.0251, {0.3f, -0.5f, -0.2f}, 0.3716504507},
                {1.5406, {0.1f, 0.05f, -0.4f}, -1.1105332373},  // both inside
                {1.5406, {0.1f, -0.05f, -0.4f}, -1.3592432264},
                {0.0251, {0.6f, 0, 0.5f}, 1.5861079251}};  // none inside
    for (const auto& row : aRow) {
        double dfTilt = 0;
        ASSERT_TRUE(calEwaldTilt(row.dfLambda, row.g, dfTilt));
        EXPECT_NEAR(dfTilt, row.dfTilt, 1e-6);
    }
    EXPECT_EQ(calClosestFrame(0.5, {0, 1, 2}), 0);
    EXPECT_EQ(calClosestFrame(-90, {3, -4, 5, -4}), 1);
    EXPECT_EQ(calClosestFrame(0, {}), -1);
}

TEST(FramePosition, FindsFrameTiltAndPixelOfAPointOnTheSphere)
{
    const FramePositionGeometry g = geometryOfSeries();
    QList<Peak3D> list;
    std::vector<Truth> vecTruth;
    std::mt19937 generator(5);
    std::uniform_real_distribution<double> uniform(0, 1);
    for (int n = 0; n < 500; ++n) {
        // Off the axis by 0.1 Å⁻¹ or more: nearer, a second tilt in reach cuts the point as well.
        const double dfFlat = 0.2 + uniform(generator),
                     dfAzimuth = std::asin(0.1 / dfFlat) + uniform(generator);
        vecTruth.push_back(
            truthOf(std::asin(dfFlat * g.dfWavelength), n % 2 ? dfAzimuth : -dfAzimuth, g, n % 121));
        list.append(Peak3D());
        list.last().setPoint(vecTruth.back().vecPoint);
    }
    CRecordingReport report;
    ASSERT_TRUE(calFramePosition(list, g, report));
    for (int n = 0; n < list.size(); ++n) {
        const Truth& t = vecTruth[std::size_t(n)];
        EXPECT_EQ(list[n].nFrame, t.nFrame);
        EXPECT_NEAR(list[n].dfFrameTilt, g.listOverallTilt[t.nFrame], 1e-3);
        EXPECT_NEAR(list[n].dfX2D, t.dfX, 5e-3);
        EXPECT_NEAR(list[n].dfY2D, t.dfY, 5e-3);
    }
}

TEST(FramePosition, AFailureLeavesTheListAndSaysWhy)
{
    const FramePositionGeometry g = geometryOfSeries();
    Peak3D peakGood = reflection(1, 2, 3), peakAxis = reflection(-1, 0.5, 2);
    peakGood.setPoint({0.1f, 0.4f, 0.002f});
    peakAxis.setPoint({0.3f, 0, 0});
    CRecordingReport report;
    QList<Peak3D> list{peakGood, peakAxis};
    EXPECT_FALSE(calFramePosition(list, g, report));
    EXPECT_EQ(report.m_listLine, QStringList{"Reflection (-1.000,0.500,2.000) is not cut by Ewald sphere."});
    EXPECT_EQ(list[0].nFrame, -1);
}

TEST(FilterReflections, KeepsStrongOnesAwayFromTheAxis)
{
    FramePositionGeometry g = geometryOfSeries();
    g.dfRotationAxis = 0;
    const auto peakAt = [&g](double dfAway, double dfIntensity, double dfFrameFit) {
        Peak3D peak = reflection(1, 1, 1, dfIntensity);
        peak.nFrame = 10;
        peak.dfX2D = 700;
        peak.dfY2D = g.centres.m_dfCenterY + g.centres.m_listShift[10].y() + dfAway;
        peak.dfFrameFit = dfFrameFit;
        peak.dfFrameTilt = -50;
        return peak;
    };
    CRecordingReport report;
    const QList<Peak3D> list{peakAt(150, 600, 11.5), peakAt(-150, 600, 2), peakAt(99, 600, 11),
                             peakAt(150, 500, 11),   peakAt(150, 600, 13), peakAt(150, 600, 12.9)};
    const QList<Peak3D> listKept = filterReflections(list, 100.0, 500.0, g, report);
    ASSERT_EQ(listKept.size(), 3);  // the test on the fitted frame has no absolute value
    EXPECT_NEAR(listKept[0].dfTiltFit, -49.5, 1e-12);
    EXPECT_NEAR(listKept[1].dfTiltFit, -59, 1e-12);
    EXPECT_NEAR(listKept[2].dfTiltFit, -48.1, 1e-12);
    EXPECT_EQ(report.marked(),
              QStringList("Filtering gvecPeak: 3 remained after filtering 6 reflections with "
                          "dRA=100 and Int=500."));
}
