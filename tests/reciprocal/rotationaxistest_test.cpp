#include "reciprocal/rotationaxistest.h"

#include <gtest/gtest.h>

#include "reciprocal/testpeaks.h"
#include "recordingreport.h"

#include <cmath>
#include <complex>

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
}

TEST(RotationAxisTest, FindsTheAxisAndTheNormalsOfKnownHeads)
{
    // Equal distances: the normals halve angles, and the sums are greatest at half the angle of the sum of
    // the heads' doubled directions. A head at 229.5 sharp is on the second side.
    CRecordingReport report;
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
        {{head(229.5, 0), head(50, 0), head(300, 0)}, {head(50, 1)}}, {}, 5, report);
    EXPECT_EQ(test.nChains, 3);
    for (int n = 0; n < 2; ++n) {
        EXPECT_NEAR(test.dfNormal[n], n == 0 ? 50 : -95.25, 1e-9);
        EXPECT_NEAR(test.dfAxis[n], n == 0 ? -40 : -5.25, 1e-9);
    }
    for (double dfWeight : {1.0, 0.5}) {
        const auto sum = std::polar(1.0, 99 * dfRadians) + std::polar(dfWeight, 100 * dfRadians) +
                         std::polar(1.0, 600 * dfRadians);
        EXPECT_NEAR(dfWeight == 1 ? test.dfMaxAngle : test.dfMaxAngleWeighted,
                    90 + std::arg(sum) / dfRadians / 2, 0.0501);
    }
    for (double dfAzimuth : {49.49, 49.51})
        EXPECT_NEAR(testRotationAxis({{head(dfAzimuth, 0)}}, {}, 5, report).dfNormal[dfAzimuth < 49.5],
                    dfAzimuth, 1e-9);
}
