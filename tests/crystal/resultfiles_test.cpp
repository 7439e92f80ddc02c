#include "crystal/hkl3d.h"
#include "crystal/hklfile.h"
#include "crystal/indexedpeaklist.h"
#include "crystal/indexingtable.h"
#include "crystal/peaklist3d.h"
#include "crystal/recordingreport.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>

#include <clocale>
#include <cmath>

namespace {

QByteArray contentOf(const QString& strFile)
{
    QFile file(strFile);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

void writeBytes(const QString& strFile, const QByteArray& baText)
{
    QFile file(strFile);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(baText);
}

const QList<Vec3D> g_listCell{{0.1f, 0, 0}, {0, 0.05f, 0}, {0, 0, 0.04f}};

}  // namespace

TEST(HklFile, ColumnsOfAllThreeSections)
{
    const QList<HKLRef> listObserved{{0, 0, 0, 1e9}, {1, -2, 3, 1234.56}, {-1, 12, -99, -3}};
    EXPECT_EQ(hklFileText(listObserved, {{0, 0, 0, 0}, {1, 2, 3, 0}}),
              "   1  -2   3  1234.6     1.0\n"
              "  -1  12 -99    -3.0     1.0\n"
              "   1   2   3       0     1.0\n"
              "   0   0   0     0.0     0.0\n");
}

TEST(HklFile, ScaleOfTheLargestIntensity)
{
    const struct {
        double dfMax;
        const char* pszFirst;
        const char* pszSecond;  // of an intensity of 100
    } aRow[] = {{10000.0, "10000.0", "  100.0"},   {54321.0, "54321.0", "  100.0"},
                {99999.9, "99999.9", "  100.0"},   {123456.0, "12345.6", "   10.0"},
                {9.87654e7, "98765.4", "    0.1"}, {-5, "   -5.0", "  100.0"}};
    for (const auto& row : aRow) {
        const QString strText = hklFileText({{1, 1, 1, row.dfMax}, {2, 2, 2, 100}}, {});
        EXPECT_EQ(strText.mid(13, 7).toStdString(), row.pszFirst);
        EXPECT_EQ(strText.mid(29 + 13, 7).toStdString(), row.pszSecond) << row.dfMax;
    }
    // Wider texts are cut, whatever they are, so that the columns hold.
    EXPECT_EQ(hklFileText({{1, 1, 1, -123456.7}}, {}).section('\n', 0, 0), "   1   1   1 -123456     1.0");
    EXPECT_EQ(hklFileText({{1, 1, 1, INFINITY}}, {}).section('\n', 0, 0), "   1   1   1     inf     1.0");
}

TEST(ResultFiles, HklAndP4pWithTheirMessages)
{
    QLocale::setDefault(QLocale::c());
    QTemporaryDir dir;
    RecordingReport report;
    const QList<Peak3D> list{reflection(0.98, 0, 0, 20, 0.1), reflection(0, 1.02, 0, 30, 0.0501)};
    ASSERT_TRUE(outputIndexingResultsToFile(list, g_listCell, {-50, 50}, dir.path(), "x.y", report));
    // d* below 0.1: the origin, ±b*, and the points of the b* c* plane in the swept wedge.
    EXPECT_EQ(contentOf(dir.filePath("x.y.hkl")),
              "   1   0   0    20.0     1.0\n"
              "   0   1   0    30.0     1.0\n"
              "   0  -1  -1       0     1.0\n"
              "   0  -1   0       0     1.0\n"
              "   0  -1   1       0     1.0\n"
              "   0   1  -1       0     1.0\n"
              "   0   1   1       0     1.0\n"
              "   0   0   0     0.0     0.0\n");
    EXPECT_EQ(contentOf(dir.filePath("x.y.p4p")),
              "CELL   10.000   20.000   25.000    90.00    90.00    90.00\n");
    ASSERT_EQ(report.listLine.size(), 4);
    EXPECT_EQ(report.listLine[0], "Maximum d* including 95% reflections: 0.1000 Å⁻¹");
    EXPECT_EQ(report.listLine[1], "No. of reflections not observed: 6");  // the origin counts, without a line
    EXPECT_EQ(report.listLine[2].mid(8), ">HKL file written: " + dir.filePath("x.y.hkl"));
    EXPECT_EQ(report.listLine[3].mid(8), ">p4p file written: " + dir.filePath("x.y.p4p"));
}

TEST(ResultFiles, WithoutReflectionsAndWithoutACell)
{
    QTemporaryDir dir;
    RecordingReport report;
    writeBytes(dir.filePath("n.p4p"), "old");
    ASSERT_TRUE(outputIndexingResultsToFile({}, {}, {}, dir.path(), "n", report));
    EXPECT_EQ(contentOf(dir.filePath("n.hkl")), "   0   0   0     0.0     0.0\n");
    EXPECT_EQ(contentOf(dir.filePath("n.p4p")), "");
    EXPECT_EQ(report.listLine.size(), 3);
}

TEST(ResultFiles, OneThatCannotBeWrittenDoesNotStopTheOther)
{
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir("n.hkl"));  // a folder in the file's place
    RecordingReport report;
    EXPECT_FALSE(outputIndexingResultsToFile({}, g_listCell, {}, dir.path(), "n", report));
    ASSERT_EQ(report.listLine.size(), 4);
    EXPECT_EQ(report.listLine[2], "Failed to open " + dir.filePath("n.hkl") + " for writing.");
    EXPECT_EQ(report.listColor[2], Qt::red);
    EXPECT_TRUE(contentOf(dir.filePath("n.p4p")).startsWith("CELL "));
    // No scraps of a failed write are left behind.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{"n.p4p"});
}

TEST(ReadHklFile, FreeFormatAndBadLines)
{
    QTemporaryDir dir;
    const QString strFile = dir.filePath("in.hkl");
    writeBytes(strFile,
               "# comment\n   1  -2   3  1234.6     1.0\n\n1 2 3\n+4\t5 6 -7e2 x\r\n1.5 2 3 4\n"
               "99999999999 1 1 5\n1 1 1 1e99\n7 8 9 1e-60\n2 2 2 nonsense\n   0   0   0     0.0     0.0");
    const char* pszLocale = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");  // decimal comma, where installed
    const QList<HKL5> list = readHKLFile(strFile);
    std::setlocale(LC_NUMERIC, "C");
    ASSERT_EQ(list.size(), 4) << (pszLocale ? pszLocale : "");
    EXPECT_EQ(list[0].nK, -2);
    EXPECT_FLOAT_EQ(list[0].fI, 1234.6f);
    EXPECT_EQ(list[1].nH, 4);
    EXPECT_EQ(list[1].fI, -700.f);
    EXPECT_EQ(list[2].fI, 0.f);
    EXPECT_EQ(list[3].nH, 0);
    EXPECT_TRUE(readHKLFile(dir.filePath("none.hkl")).isEmpty());

    RecordingReport report;
    QList<Peak3D> listPeak;
    EXPECT_FALSE(loadShelxFile({}, g_listCell, listPeak, report));
    EXPECT_TRUE(loadShelxFile(strFile, g_listCell, listPeak, report));
    EXPECT_EQ(listPeak.size(), 4);
    EXPECT_EQ(report.listLine, QStringList{"4 reflections loaded from " + strFile + "."});
}

TEST(PeakLists, ExactLines)
{
    QTemporaryDir dir;
    Peak3D peak = reflection(-12, 3.75, -0.4, 1234.56, 0.5123456);
    peak.dfX2D = 511.6;
    peak.dfY2D = 98.9;
    peak.dfI2D = 87654.32;
    peak.nFrame = 7;
    peak.dfFrameTilt = -3.25;
    peak.setPoint({0.25f, -0.125f, 1});
    const QString strFile = dir.filePath("p.txt");
    const QByteArray baHead =
        "# FrameNo. | FrameTilt | d* | I_point | I_2D | x_2D | y_2D | x_3D | y_3D | z_3D\n";
    const QByteArray baLine =
        "   7   -3.250 0.512346   1234.6         87654.3      512       99  0.250000 -0.125000  1.000000\n";
    ASSERT_TRUE(writePeak3DList({peak}, strFile, false));
    EXPECT_EQ(contentOf(strFile), baHead + baLine);
    ASSERT_TRUE(writePeak3DList({peak}, strFile, true));
    EXPECT_EQ(contentOf(strFile), "# H | K | L " + baHead + " -12.000    3.750   -0.400 " + baLine);
    ASSERT_TRUE(writeIndexedPeakList({{}, {peak}}, strFile));
    EXPECT_EQ(contentOf(strFile),
              "# Frame.no    H    K    L    d*    x    y     I_point    I_2D\n"
              "   2  -12    3    0   0.512346   511    98     1234.6    87654.3\n");
    EXPECT_FALSE(writePeak3DList({}, {}, true));
    EXPECT_FALSE(writeIndexedPeakList({}, dir.filePath("no/such/folder.ipf")));

    RecordingReport report;
    EXPECT_TRUE(outputIndexedReflectionsOnFrames({}, dir.path(), "q", report));
    EXPECT_TRUE(outputIndexedReflectionsOnFrames({}, dir.filePath("no"), "q", report));
    EXPECT_EQ(report.listLine[0].mid(8),
              ">List of the indexed peaks on the frames output to file: " + dir.filePath("q.ipf"));
    EXPECT_EQ(report.listLine[1].mid(8), ">Failed to save file: " + dir.filePath("no/q.ipf"));
    EXPECT_EQ(report.listColor[1], Qt::black);
}

TEST(IndexingTable, LinesAndAnInfiniteDValue)
{
    Peak3D peak = reflection(1.5, -2.25, 0, 1234.56, 0.5);
    peak.setPoint({0.25f, -0.125f, 1});
    RecordingReport report;
    outputIndexingResultsToWindow({peak, Peak3D()}, report);
    ASSERT_EQ(report.listLine.size(), 1);
    const QStringList listPart = report.listLine[0].split('\n');
    ASSERT_EQ(listPart.size(), 6);
    EXPECT_EQ(
        listPart[1],
        " No. [       x,       y,       z] (    h.,    k.,    l.) (   h,   k,   l)  Intensity  d-value");
    EXPECT_EQ(
        listPart[3],
        "   1 ( 0.25000,-0.12500, 1.00000) [  1.50, -2.25,  0.00] (   2,  -2,   0)     1234.6    2.000 Å  ");
    EXPECT_TRUE(listPart[4].endsWith("     inf Å  "));
    for (int n : {0, 2, 5})
        EXPECT_EQ(listPart[n], QString(listPart[1].size() + 1, '-'));
}
