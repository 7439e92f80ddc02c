// Runs that try a model on one pattern.
#include "reciprocal/planeindexing.h"
#include "reciprocal/stretchingtest.h"
#include "reciprocal/testpeaks.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "recordingreport.h"

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
    for (int n = 0; n < 9; ++n)  // the last is no peak of the pattern, one is a little off
        list.append(peakOf(49 * (n % 3) - 24.5, 49 * (n / 3) - 98 + (n == 4 ? 0.2 : 0), n == 8 ? 0.01 : 0.5));
    CRecordingReport report;
    const QList<PlaneGroup> listGroup = test2DIndexing(list, 0.001, 1, 2, report);
    // Five steps along x and five along y, whichever way they point.
    EXPECT_EQ(listGroup[0].nCount, 5);
    EXPECT_EQ(listGroup[1].nCount, 5);
    const QStringList listLine = report.log().split('\n');
    EXPECT_EQ(listLine[0], "Total: 8 points.");
    EXPECT_EQ(listLine[1], "   1 -24500.00     0.00  24.5000    0.041");
    EXPECT_EQ(listLine.mid(9, 2), (QStringList{"Total calculated d*: 220", "Total: 28 difference vectors."}));
    EXPECT_TRUE(listLine[11].startsWith("   1 ") && listLine[11].endsWith("   5"));
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
    EXPECT_TRUE(report.marked().last().startsWith("red Failed to open " + data.m_strProjectDir));
}
