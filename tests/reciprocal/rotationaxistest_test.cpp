#include "reciprocal/rotationaxistest.h"

#include <gtest/gtest.h>

#include "recordingreport.h"

#include <cmath>
#include <complex>
#include <random>

namespace {

Peak3D peakAt(double dfX, double dfY, int nFrame, double dfIntensity = 1)
{
    Peak3D peak;
    peak.dfX2D = dfX;
    peak.dfY2D = dfY;
    peak.nFrame = nFrame;
    peak.dfIPoint = dfIntensity;
    return peak;
}

}  // namespace

// Points at random turned through a plane of some thickness: none near the axis begin to show.
TEST(RotationAxisTest, FindsTheAxisOfASimulatedSeries)
{
    const double dfRadians = std::acos(-1.0) / 180;
    for (double dfAxis : {12.0, 77.0, 141.5}) {
        const double ca = std::cos(dfAxis * dfRadians), sa = std::sin(dfAxis * dfRadians);
        std::mt19937 random(7);
        std::uniform_real_distribution<double> uniform(-400, 400);
        std::vector<QList<Peak3D>> vec(100);
        for (int i = 0; i < 3000; ++i) {
            const double x = uniform(random), y = uniform(random), z = uniform(random);
            for (int n = 0; n < 100 && x * x + y * y + z * z < 160000; ++n) {
                const double c = std::cos(n * dfRadians), s = std::sin(n * dfRadians), v = c * y + s * z;
                if (std::fabs(c * z - s * y) < 4)
                    vec[size_t(n)].append(peakAt(ca * x + sa * v, ca * v - sa * x, n));
            }
        }
        CRunReport report;
        const RotationAxisTest test = testRotationAxis({vec.begin(), vec.end()}, {}, 5, report);
        EXPECT_GT(test.nChains, 500);
        EXPECT_NEAR(test.dfMaxAngle, dfAxis, 3);
        EXPECT_NEAR(test.dfMaxAngleWeighted, dfAxis, 3);
    }
}

TEST(RotationAxisTest, ChainsTablesAndMessages)
{
    // Exactly 5 away begins a chain of its own; 4 frames after its last peak a chain is closed.
    const QList<QList<Peak3D>> list{{peakAt(100, 0, 0, 7), peakAt(0, -20, 0)},
                                    {},
                                    {},
                                    {peakAt(103, 4, 3, 9.04), peakAt(-2.9, -24, 3)},
                                    {},
                                    {},
                                    {},
                                    {peakAt(103, 4, 7)}};
    BeamCentres centres;
    centres.m_dfCenterX = 500;
    centres.m_dfCenterY = 400.4;
    CRecordingReport report;
    testRotationAxis(list, centres, 5, report);
    const QStringList& listLine = report.m_listLine;
    EXPECT_EQ(
        listLine.mid(0, 6),
        (QStringList{"TestRotationAxis: 5 peaks in 4 chains found. ",
                     "  No.  Frame     x     y       x.       y.   MaxInt   Angle  Occ.", QString(70, '-'),
                     "    1      1   600   400    100.0      0.0      7.0     0.0     1\n"
                     "    2      1   500   380      0.0    -20.0      1.0    90.0     2\n"
                     "    3      4   603   404    103.0      4.0      9.0    -2.2     1\n"
                     "    4      8   603   404    103.0      4.0      1.0    -2.2     1\n",
                     "Angle       Sum1       Sum2", QString(18, '-')}));
    EXPECT_TRUE(listLine[6].startsWith("  0.0      0.000      0.000\n  0.1 "));
    EXPECT_EQ(listLine[6].count('\n'), 1800);
    testRotationAxis({{peakAt(100, 0, 0)}}, centres, 5, report);
    EXPECT_EQ(listLine.mid(18), (QStringList{"Max Angle un-weighted: 90", "Max Angle Weighted: 90",
                                             "Azimuth of Normal Vector 1/Tilt Axis: 0/-90",
                                             "Azimuth of Normal Vector 2/Tilt Axis: 0/-90"}));
    EXPECT_EQ(testRotationAxis({}, centres, 5, report).dfAxis[1], -90);

    // Equal distances: the normals halve angles, and the sums are greatest at half the angle of the sum of
    // the heads' doubled directions. A head at 229.5 sharp is on the second side.
    const double dfRadians = std::acos(-1.0) / 180;
    double r = 1000;
    const auto head = [&](double dfAzimuth, int nFrame) {
        return peakAt(r * std::cos(dfAzimuth * dfRadians), -r * std::sin(dfAzimuth * dfRadians), nFrame);
    };
    const auto azimuth = [](const Peak3D& p) {
        return std::atan2(-p.dfY2D, p.dfX2D) * 180 / std::acos(-1.0) + 360;
    };
    while (azimuth(head(229.5, 0)) != 229.5 && r < 1100)
        r += 1;
    ASSERT_LT(r, 1100);
    const RotationAxisTest test = testRotationAxis(
        {{head(229.5, 0), head(50, 0), head(300, 0)}, {head(50, 1)}}, centres, 5, report);
    EXPECT_EQ(test.nChains, 3);
    EXPECT_NEAR(test.dfNormal[0], 50, 1e-9);
    EXPECT_NEAR(test.dfAxis[0], -40, 1e-9);
    EXPECT_NEAR(test.dfNormal[1], -95.25, 1e-9);
    EXPECT_NEAR(test.dfAxis[1], -5.25, 1e-9);
    for (double dfWeight : {1.0, 0.5}) {
        const auto sum = std::polar(1.0, 99 * dfRadians) + std::polar(dfWeight, 100 * dfRadians) +
                         std::polar(1.0, 600 * dfRadians);
        EXPECT_NEAR(dfWeight == 1 ? test.dfMaxAngle : test.dfMaxAngleWeighted,
                    90 + std::arg(sum) / dfRadians / 2, 0.0501);
    }
    for (double dfAzimuth : {49.49, 49.51})
        EXPECT_NEAR(testRotationAxis({{head(dfAzimuth, 0)}}, centres, 5, report).dfNormal[dfAzimuth < 49.5],
                    dfAzimuth, 1e-9);
}
