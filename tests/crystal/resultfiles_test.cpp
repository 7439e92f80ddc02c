#include "crystal/cellmessage.h"
#include "crystal/cellrefinement.h"
#include "crystal/hkl3d.h"
#include "crystal/hklfile.h"
#include "crystal/indexedpeaklist.h"
#include "crystal/indexingfiles.h"
#include "crystal/indexingtable.h"
#include "crystal/peaklist3d.h"
#include "crystal/reflectionconditions.h"
#include "crystal/testreflection.h"

#include <gtest/gtest.h>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>

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
    EXPECT_EQ(hklFileText({{0, 0, 0, 1e9}, {1, -2, -99, 1234.56}}, {{0, 0, 0, 0}}),
              "   1  -2 -99  1234.6     1.0\n   0   0   0     0.0     0.0\n");
}

TEST(ResultFiles, HklAndP4pWithTheirMessages)
{
    QLocale::setDefault(QLocale::c());
    QTemporaryDir dir;
    CRecordingReport report;
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
    ASSERT_EQ(report.m_listLine.size(), 4);
    EXPECT_EQ(report.m_listLine[0], "Maximum d* including 95% reflections: 0.1000 Å⁻¹");
    EXPECT_EQ(report.m_listLine[1],
              "No. of reflections not observed: 6");  // the origin counts, without a line
    EXPECT_EQ(report.m_listLine[2].mid(8), ">HKL file written: " + dir.filePath("x.y.hkl"));
    EXPECT_EQ(report.m_listLine[3].mid(8), ">p4p file written: " + dir.filePath("x.y.p4p"));
}

// Messages follow the user's locale, files never do.
TEST(ResultFiles, GermanGroupsAndCommasStandInMessagesOnly)
{
    QTemporaryDir dir;
    CRecordingReport report;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QList<Vec3D> listCell{{0.0008f, 0, 0}, {0, 0.05f, 0}, {0, 0, 0.05f}};
    const QList<Peak3D> list{reflection(1234, 0, 0, 12345.67, 0.25)};
    QList<Peak3D> listRead;
    EXPECT_TRUE(outputIndexingResultsToFile(list, listCell, {-50, 50}, dir.path(), "n", report));
    EXPECT_TRUE(loadShelxFile(dir.filePath("n.hkl"), listCell, listRead, report));
    outputIndexingResultsToWindow(list, report);
    CSpaceGroup spaceGroup;
    testReflectionConditions(list, 0.1, spaceGroup, report);
    report.addHtml(unitCellHtml("Found unit cell", listCell));
    double a = 1234.5, b = 20, c = 25, alpha = 90, beta = 90, gamma = 90;
    unitCellRefinement(QVector<Peak3D>(6, list[0]).toList(), a, b, c, alpha, beta, gamma, report);
    QLocale::setDefault(QLocale::c());
    EXPECT_TRUE(contentOf(dir.filePath("n.hkl")).startsWith(" 1234   0   0 12345.7     1.0\n"));
    EXPECT_EQ(contentOf(dir.filePath("n.p4p")),
              "CELL 1250.000   20.000   20.000    90.00    90.00    90.00\n");
    EXPECT_EQ(report.m_listLine[0], "Maximum d* including 95% reflections: 0,2500 Å⁻¹");
    for (const char* pszPart :
         {"No. of reflections not observed: 18.", " reflections loaded from ", "   12345.7",
          " (  12.345,7/       0,0)", "a=1.250,000 Å, b=20,000 Å", "V=500.000,0 Å³",
          "ucparams=1250,20,20,90,90,90", "before UCLS refinement: 1.234,5, 20, 25, 90"})
        EXPECT_TRUE(report.said(pszPart)) << pszPart << report.m_listLine.mid(0, 2).join('\n').toStdString();
}

TEST(ResultFiles, OneThatCannotBeWrittenDoesNotStopTheOther)
{
    QTemporaryDir dir;
    ASSERT_TRUE(QDir(dir.path()).mkdir("n.hkl"));  // a folder in the file's place
    CRecordingReport report;
    EXPECT_FALSE(outputIndexingResultsToFile({}, g_listCell, {}, dir.path(), "n", report));
    ASSERT_EQ(report.m_listLine.size(), 4);
    EXPECT_EQ(report.m_listLine[2], "Failed to open " + dir.filePath("n.hkl") + " for writing.");
    EXPECT_EQ(report.m_listColor[2], Qt::red);
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
    const QList<HKL5> list = readHKLFile(strFile);
    ASSERT_EQ(list.size(), 4);
    EXPECT_EQ(list[0].nK, -2);
    EXPECT_FLOAT_EQ(list[0].fI, 1234.6f);
    EXPECT_EQ(list[1].nH, 4);
    EXPECT_EQ(list[1].fI, -700.f);
    EXPECT_EQ(list[2].fI, 0.f);
    EXPECT_EQ(list[3].nH, 0);
    CRecordingReport report;
    QList<Peak3D> listPeak;
    EXPECT_TRUE(loadShelxFile(strFile, g_listCell, listPeak, report));
    EXPECT_FALSE(loadShelxFile(dir.filePath("none.hkl"), g_listCell, listPeak, report));
    EXPECT_EQ(listPeak.size(), 4);
    EXPECT_EQ(report.marked(),
              (QStringList{"4 reflections loaded from " + strFile + ".",
                           "red Failed to open " + dir.filePath("none.hkl") + " for reading."}));
}

TEST(PeakLists, ExactLines)
{
    QTemporaryDir dir;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));  // nothing of it in a file
    Peak3D peak = reflection(1234, 3.75, -0.4, 1234.56, 0.5123456);
    peak.dfX2D = 511.6;
    peak.dfY2D = 98.9;
    peak.dfI2D = 87654.32;
    peak.nFrame = 1007;
    peak.dfFrameTilt = -1003.25;
    peak.setPoint({0.25f, -0.125f, 1});
    const QString strFile = dir.filePath("p.txt");
    const QByteArray baHead =
        "# FrameNo. | FrameTilt | d* | I_point | I_2D | x_2D | y_2D | x_3D | y_3D | z_3D\n";
    const QByteArray baLine =
        "1007 -1003.250 0.512346   1234.6         87654.3      512       99  0.250000 -0.125000  1.000000\n";
    ASSERT_TRUE(writePeak3DList({peak}, strFile, false));
    EXPECT_EQ(contentOf(strFile), baHead + baLine);
    ASSERT_TRUE(writePeak3DList({peak}, strFile, true));
    EXPECT_EQ(contentOf(strFile), "# H | K | L " + baHead + "1234.000    3.750   -0.400 " + baLine);
    ASSERT_TRUE(writeIndexedPeakList({{}, {peak}}, strFile));
    EXPECT_EQ(contentOf(strFile),
              "# Frame.no    H    K    L    d*    x    y     I_point    I_2D\n"
              "   2 1234    3    0   0.512346   511    98     1234.6    87654.3\n");
    QLocale::setDefault(QLocale::c());
}

TEST(IndexingTable, LinesAndAnInfiniteDValue)
{
    Peak3D peak = reflection(1.5, -2.25, 0, 1234.56, 0.5);
    peak.setPoint({0.25f, -0.125f, 1});
    CRecordingReport report;
    outputIndexingResultsToWindow({peak, Peak3D()}, report);
    ASSERT_EQ(report.m_listLine.size(), 1);
    const QStringList listPart = report.m_listLine[0].split('\n');
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
