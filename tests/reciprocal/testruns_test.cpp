// Runs that try a model or an idea and only write to the log.
#include "reciprocal/planeindexing.h"
#include "reciprocal/rotationaxistest.h"
#include "reciprocal/stretchingtest.h"
#include "tests/reciprocal/testpeaks.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <complex>

#include "tests/recordingreport.h"

namespace tessera {

namespace {

Peak3D peakOf(double dfX, double dfY, double dfDStar, double h = 0, double k = 0)
{
    Peak3D peak = peakAt(dfX, dfY, 1, 12.34);
    peak.dfDStar = dfDStar;
    peak.setHKL(h, k, 7);
    return peak;
}

}  // namespace

TEST(PlaneIndexing, ASquareNetFallsIntoItsGroups)
{
    QList<Peak3D> list;
    for (int n = 0; n < 9; ++n) {  // the last is no peak of the pattern, one is a little off
        list.append(peakOf(49 * (n % 3) - 24.5, 49 * (n / 3) - 98 + (n == 4 ? 0.2 : 0), n == 8 ? 0.01 : 0.5));
    }
    CRecordingReport report;
    const QList<PlaneGroup> listGroup = test2DIndexing(list, 0.001, 1, 2, report);
    // Five steps along x and five along y, whichever way they point.
    EXPECT_EQ(listGroup[0].nCount, 5);
    EXPECT_EQ(listGroup[1].nCount, 5);
    const QStringList listLine = report.log().split('\n');
    EXPECT_EQ(listLine[0], "Total: 8 points.");
    EXPECT_EQ(listLine[1], "   1 -24500.00     0.00  24.5000    0.041");
    EXPECT_EQ(listLine.mid(9, 2), (QStringList{"Total calculated d*: 220", "Total: 28 difference vectors."}));
    EXPECT_TRUE(listLine[11].startsWith("   1 "));
    EXPECT_TRUE(listLine[11].endsWith("   5"));
    EXPECT_TRUE(listLine[12].startsWith("       0      0      1   0.0482   20.734    0.00"));
    EXPECT_EQ(listLine.last(), "Total: 28 occ.");
    report.m_nStopAfter = 1;
    EXPECT_TRUE(test2DIndexing(list, 0.001, 1, 2, report).isEmpty());
    EXPECT_TRUE(report.log().endsWith("red >2D indexing did not finish."));
}

TEST(StretchingTest, WritesTheSameToLogAndFile)
{
    QTemporaryDir dir;
    DataSet data;
    data.m_strProjectDir = dir.path();
    data.m_strProjectName = "net";
    data.m_dfCenterX = 100;
    data.m_dfCenterY = 50;
    data.m_listShift = {QPointF(), QPointF(10, 0)};
    data.m_listCell = {{0.03f, 0.03f, 0}, {-0.02f, 0, 0}, {0, 0, 0.1f}};
    CRecordingReport report;
    EXPECT_TRUE(testStreching({peakOf(110, 150, 0, 3.2, -3.9), peakOf(110, 150, 0, 0, 0.3)}, data, report));
    const QStringList listLine{"   1   3  -4     12.3 0.181818   110.0   150.0    90.00   20.000",
                               "   2   0   0     12.3 0.000000   110.0   150.0    90.00    0.000",
                               "a* = 0.030000, 0.030000, 0.000000     45.00",
                               "b* = -0.020000, 0.000000, 0.000000    180.00", "a*^b* =   135.00"};
    EXPECT_EQ(report.m_listLine, listLine);
    QFile file(dir.filePath("net_pos.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    EXPECT_EQ(QString::fromUtf8(file.readAll()), listLine.join('\n') + '\n');
    data.m_strProjectDir += "/missing";
    EXPECT_FALSE(testStreching({}, data, report));
    EXPECT_TRUE(report.said("red Failed to open " + data.m_strProjectDir));
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
    while (azimuth(head(229.5, 0)) != 229.5 && r < 1100) {
        r += 1;
    }
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
    for (double dfAzimuth : {49.49, 49.51, 229.49}) {
        const double df = testRotationAxis({{head(dfAzimuth, 0)}}, {}, 5, report).dfNormal[dfAzimuth < 49.5];
        EXPECT_NEAR(std::remainder(df - dfAzimuth, 360), 0, 1e-9) << dfAzimuth;
    }
}

}  // namespace tessera
