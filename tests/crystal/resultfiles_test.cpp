#include "crystal/hkl3d.h"
#include "crystal/hklfile.h"
#include "crystal/indexedpeaklist.h"
#include "crystal/indexingfiles.h"
#include "crystal/indexingtable.h"
#include "crystal/peaklist3d.h"
#include "tests/crystal/testreflection.h"
#include "tests/filebytes.h"
#include "tests/formatsdoc.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace tessera {

namespace {

const QList<Vec3D> g_listCell{{0.1f, 0, 0}, {0, 0.05f, 0}, {0, 0, 0.04f}};

class ResultFiles : public testing::Test {
protected:
    QTemporaryDir m_dir;
    CRecordingReport m_report;

    void SetUp() override { speakGerman(); }
    QString path(const char* pszName) const { return m_dir.filePath(pszName); }
    bool write(const QList<Peak3D>& list, const QList<Vec3D>& listCell, const QString& strName)
    {
        return outputIndexingResultsToFile(list, basisFromList(listCell), {-50, 50}, m_dir.path(), strName,
                                           m_report);
    }
};

}  // namespace

TEST_F(ResultFiles, ScaleOfTheLargestIntensity)
{
    const struct {
        double dfMax;
        const char* pszFirst;
        const char* pszSecond;  // of an intensity of 100
    } aRow[] = {{10000.0, "10000.0", "  100.0"},
                {99999.9, "99999.9", "  100.0"},
                {123456.0, "12345.6", "   10.0"},
                {9.87654e7, "98765.4", "    0.1"},
                {-123456.7, "-123456", "  100.0"}};  // cut, so that the columns hold
    for (const auto& row : aRow) {
        const QString strText = hklFileText({{1, 1, 1, row.dfMax}, {2, 2, 2, 100}}, {});
        EXPECT_EQ(strText.mid(13, 7).toStdString(), row.pszFirst);
        EXPECT_EQ(strText.mid(29 + 13, 7).toStdString(), row.pszSecond) << row.dfMax;
    }
    EXPECT_EQ(hklFileText({{0, 0, 0, 1e9}, {1, -2, -99, 1234.56}}, {{0, 0, 0, 0}}),
              "   1  -2 -99  1234.6     1.0\n   0   0   0     0.0     0.0\n");
}

// Columns of 4, 4, 4, 8 and 8, which the reader takes apart where no blank does.
TEST_F(ResultFiles, HklColumnsHoldFromMinus999To9999)
{
    const QList<HKLRef> listSeen{{-100, -999, -10, 20}, {1000, 9999, 1234, 30.5}, {1, 1000, -1, -5}};
    const QString strText = hklFileText(listSeen, {{9999, -999, 1000, 0}});
    EXPECT_EQ(strText,
              "-100-999 -10    20.0     1.0\n"
              "100099991234    30.5     1.0\n"
              "   11000  -1    -5.0     1.0\n"
              "9999-9991000       0     1.0\n"
              "   0   0   0     0.0     0.0\n");
    // Lines of other programs: an intensity that fills its column, and numbers that only seem to stand in
    // columns.
    writeBytes(path("wide.hkl"), strText.toLatin1() +
                                     "   1   2   312345.67    1.00\n1 2 3 12345.6\n"
                                     "12 13 14 12345.6\n1 2 34\n");
    QStringList listRead;
    for (const HKL5& hkl : readHKLFile(path("wide.hkl"))) {
        listRead += QString("%1,%2,%3 %4").arg(hkl.nH).arg(hkl.nK).arg(hkl.nL).arg(double(hkl.fI), 0, 'f', 1);
    }
    EXPECT_EQ(listRead.join("; "),
              "-100,-999,-10 20.0; 1000,9999,1234 30.5; 1,1000,-1 -5.0; "
              "9999,-999,1000 0.0; 0,0,0 0.0; 1,2,3 12345.7; 1,2,3 12345.6; "
              "12,13,14 12345.6");
}

TEST_F(ResultFiles, HklAndP4pWithTheirMessages)
{
    EXPECT_TRUE(
        write({reflection(0.98, 0, 0, 20, 0.1), reflection(0, 1.02, 0, 30, 0.0501)}, g_listCell, "x.y"));
    // d* below 0.1: the origin, ±b*, and the points of the b* c* plane in the swept wedge.
    EXPECT_EQ(readBytes(path("x.y.hkl")),
              "   1   0   0    20.0     1.0\n"
              "   0   1   0    30.0     1.0\n"
              "   0  -1  -1       0     1.0\n   0  -1   0       0     1.0\n   0  -1   1       0     1.0\n"
              "   0   1  -1       0     1.0\n   0   1   1       0     1.0\n"
              "   0   0   0     0.0     0.0\n");
    EXPECT_EQ(readBytes(path("x.y.p4p")), "CELL   10.000   20.000   25.000    90.00    90.00    90.00\n");
    // One that can't be written doesn't stop the other, and leaves no scraps.
    ASSERT_TRUE(QDir(m_dir.path()).mkdir("n.hkl"));  // a folder in the file's place
    EXPECT_FALSE(write({}, g_listCell, "n"));
    EXPECT_EQ(QDir(m_dir.path()).entryList(QDir::Files), (QStringList{"n.p4p", "x.y.hkl", "x.y.p4p"}));
    // The origin counts as not observed, without a line.
    EXPECT_EQ(m_report.log(), QString("Maximum d* including 95% reflections: 0,1000 Å⁻¹\n"
                                      "No. of reflections not observed: 6\n"
                                      ">HKL file written: %1/x.y.hkl\n>p4p file written: %1/x.y.p4p\n"
                                      "Maximum d* including 95% reflections: 0,0000 Å⁻¹\n"
                                      "No. of reflections not observed: 0\n"
                                      "red Failed to open %1/n.hkl for writing.\nred %1/n.hkl: is a folder\n"
                                      ">p4p file written: %1/n.p4p")
                                  .arg(m_dir.path()));
}

TEST_F(ResultFiles, HklFilesAreReadInFreeFormat)
{
    writeBytes(path("in.hkl"),
               "# comment\n   1  -2   3  1234.6     1.0\n\n1 2 3\n+4\t5 6 -7e2 x\r\n1.5 2 3 4\n"
               "99999999999 1 1 5\n1 1 1 1e99\n7 8 9 1e-60\n2 2 2 nonsense\n   0   0   0     0.0     0.0");
    QString strRead;
    for (const HKL5& hkl : readHKLFile(path("in.hkl"))) {
        strRead +=
            QString("%1,%2,%3 %4; ").arg(hkl.nH).arg(hkl.nK).arg(hkl.nL).arg(double(hkl.fI), 0, 'f', 1);
    }
    EXPECT_EQ(strRead, "1,-2,3 1234.6; 4,5,6 -700.0; 7,8,9 0.0; 0,0,0 0.0; ");
    QList<Peak3D> listPeak;
    EXPECT_TRUE(loadShelxFile(path("in.hkl"), basisFromList(g_listCell), listPeak, m_report));
    EXPECT_FALSE(loadShelxFile(path("none.hkl"), basisFromList(g_listCell), listPeak, m_report));
    EXPECT_EQ(listPeak.size(), 4);
    EXPECT_EQ(m_report.log(), QString("4 reflections loaded from %1/in.hkl.\n"
                                      "red Failed to open %1/none.hkl for reading.")
                                  .arg(m_dir.path()));
}

TEST_F(ResultFiles, PeakListsAndTableHaveTheirColumns)
{
    Peak3D peak = reflection(1234, 3.75, -0.4, 1234.56, 0.5123456);
    peak.dfX2D = 511.6;
    peak.dfY2D = 98.9;
    peak.dfI2D = 87654.32;
    peak.nFrame = 1007;
    peak.dfFrameTilt = -1003.25;
    peak.setPoint({0.25f, -0.125f, 1});
    const QByteArray baHead =
        "# FrameNo. | FrameTilt | d* | I_point | I_2D | x_2D | y_2D | x_3D | y_3D | z_3D\n";
    const QByteArray baLine =
        "1007 -1003.250 0.512346   1234.6         87654.3      512       99  0.250000 -0.125000  1.000000\n";
    ASSERT_TRUE(writePeak3DList({peak}, path("p"), false));
    EXPECT_EQ(readBytes(path("p")), baHead + baLine);
    ASSERT_TRUE(writePeak3DList({peak}, path("p"), true));
    EXPECT_EQ(readBytes(path("p")), "# H | K | L " + baHead + "1234.000    3.750   -0.400 " + baLine);
    const QString strTitles = QString::fromLatin1(readBytes(path("p"))).section(QLatin1Char('\n'), 0, 0);
    EXPECT_EQ(strTitles.split(QRegularExpression(QStringLiteral("[#| ]+")), Qt::SkipEmptyParts),
              wordsOfFormat(QStringLiteral("fields: peaks3d")));
    ASSERT_TRUE(writeIndexedPeakList({{}, {peak}}, path("p")));
    EXPECT_EQ(readBytes(path("p")),
              "# Frame.no    H    K    L    d*    x    y     I_point    I_2D\n"
              "   2 1234    3    0   0.512346   511    98     1234.6    87654.3\n");
    outputIndexingResultsToWindow({peak, Peak3D()}, m_report);
    const QString strRule(94, '-');
    EXPECT_EQ(m_report.log(),
              strRule +
                  "\n No. [       x,       y,       z] (    h.,    k.,    l.) (   h,   k,   l)  Intensity  "
                  "d-value\n" +
                  strRule +
                  "\n   1 ( 0.25000,-0.12500, 1.00000) [1234.00,  3.75, -0.40] (1234,   4,   0)     1234.6 "
                  "   1.952 Å  \n"
                  "   2 ( 0.00000, 0.00000, 0.00000) [  0.00,  0.00,  0.00] (   0,   0,   0)        0.0 "
                  "     inf Å  \n" +
                  strRule);
}

}  // namespace tessera
