#include "dataset/peaklistfile.h"
#include "tests/dataset/textfiles.h"
#include "tests/recordingreport.h"

#include <QDir>
#include <QTemporaryDir>

#include <tuple>

namespace tessera {

namespace {

Peak3D peakAt(double dfX, double dfY, double dfI, double dfI2D)
{
    Peak3D peak;
    std::tie(peak.dfX2D, peak.dfY2D, peak.dfIPoint, peak.dfI2D) = std::tie(dfX, dfY, dfI, dfI2D);
    return peak;
}

// What one reading must leave in the data set: per frame "x y I I2D id mask" of each peak.
QString storeText(const DataSet& data)
{
    QString strText;
    for (int nFrame = 0; nFrame < data.m_listPeakFrame.size(); ++nFrame) {
        strText += nFrame > 0 ? "|" : "";
        for (int i = 0; i < data.m_listPeakFrame[nFrame].size(); ++i) {
            const Peak3D& peak = data.m_listPeakFrame[nFrame][i];
            EXPECT_EQ(peak.nFrame, nFrame);
            strText += QString::asprintf("%.11g %.11g %g %g #%d {", peak.dfX2D, peak.dfY2D, peak.dfIPoint,
                                         peak.dfI2D, peak.nID);
            for (int nGroup : data.m_vecPeakGroup[nFrame][i]) {
                strText += QString("%1,").arg(nGroup);
            }
            strText += '}';
        }
    }
    return strText;
}

const char* const g_pszFormerPeaks = "9 9 9 9 #0 {7,}";  // stay when the result is 0

/// Reads these bytes into two frames that have peaks already, and compares what is there then and was said.
void expectRead(const QByteArray& bytesFile, const QString& strStore, const QStringList& listMessage = {})
{
    SCOPED_TRACE(bytesFile.constData());
    const bool bFormer = strStore == QLatin1String(g_pszFormerPeaks);
    DataSet data;
    setFrames(data, 2);
    data.m_listPeakFrame = {{peakAt(9, 9, 9, 9)}};
    data.m_listPeakFrame[0][0].nFrame = 0;
    data.m_vecPeakGroup = {{{7}}};
    CRecordingReport report;
    QString strReason;
    EXPECT_EQ(readPeakListBytes(data, bytesFile, "f.pk", report, &strReason), !bFormer);
    EXPECT_EQ(storeText(data), strStore);
    EXPECT_EQ(report.marked(), listMessage);
    EXPECT_EQ(strReason.startsWith("f.pk: "), bFormer || !listMessage.isEmpty()) << strReason.toStdString();
    EXPECT_EQ(report.m_listProgress, QStringList({"%p% 1..0", "end"}));
}

}  // namespace

TEST(PeakList, ReadsEveryForm)
{
    expectRead("1 0 0 1.5 2 3\n2 1 0 4 5 6 8000000000000001\n3 1 1 7 8 9 10 C000000000000000",
               "1.5 2 3 3 #0 {}|4 5 6 6 #1 {0,63,}7 8 9 10 #2 {0,1,}");
    expectRead("\xEF\xBB\xBF# head\r\n\r\n1 0 0 1 2 3\r# between\r\t2\t1  0 4 5 6 \n\n",
               "1 2 3 3 #0 {}|4 5 6 6 #1 {}");
    expectRead("1 1 5 1 1 1\n2 0 5 2 2 2\n3 1 5 3 3 3", "2 2 2 2 #1 {}|1 1 1 1 #0 {}3 3 3 3 #2 {}");
    expectRead("1 0 0 1 1 1 80000000000000001\n2 0 1 1 1 1 zebra", "1 1 1 1 #0 {0,}1 1 1 1 #1 {}|");
    expectRead("1 0 0 0.1 16777217 3", "0.10000000149 16777216 3 3 #0 {}|");  // single precision
}

TEST(PeakList, OfOtherFramesOrOutOfOrderLeavesTheFormerPeaks)
{
    const QString strFrames =
        "red This peak list file does not match the current ed3d file in frame numbers.";
    expectRead("1 0 0 1 2 3\n2 2 0 1 2 3", g_pszFormerPeaks, {strFrames});
    expectRead("1 2147483647 0 1 2 3", g_pszFormerPeaks, {strFrames});
    for (const char* strNone : {"2 0 0 1 2 3", "1 0 0 1 2 3\n1 0 1 1 2 3", "", "# a\n#b"}) {
        expectRead(strNone, g_pszFormerPeaks);
    }
}

TEST(PeakList, EndsAtTheFirstBrokenLine)
{
    for (const QByteArray& strSecond :
         {QByteArray("2 0 1 4 5\n3 0 2 6 7 8"), QByteArray("2 0 1 4,5 1 6"), QByteArray("2 0 1 nan 5 6"),
          QByteArray("2 -1 1 4 5 6"), QByteArray("2 0 1 4 \0 6", 11),
          QByteArray("2 0 1 12.012345.6 5.0 5.0 8000000000000000")}) {
        expectRead("1 0 0 1 2 3\n" + strSecond, "1 2 3 3 #0 {}|",
                   {"red Wrong file format for peak list: f.pk"});
    }
}

TEST(PeakList, NeedsFramesUpToItsLastAndMovesTheBarEveryThousandLines)
{
    QByteArray bytesFile;
    for (int i = 1; i <= 2500; ++i) {
        bytesFile += QByteArray::number(i) + " 9 0 1 2 3\n";
    }
    for (int nFrames : {9, 10, 20}) {
        DataSet data;
        setFrames(data, nFrames);
        CRecordingReport report;
        EXPECT_EQ(readPeakListBytes(data, bytesFile, "f.pk", report), nFrames > 9) << nFrames;
        EXPECT_EQ(data.m_listPeakFrame.size(), nFrames > 9 ? nFrames : 0);
        EXPECT_EQ(data.m_vecPeakGroup.size(), data.m_listPeakFrame.size());
        EXPECT_EQ(data.m_listPeakFrame.value(9).size(), nFrames > 9 ? 2500 : 0);
        EXPECT_EQ(report.m_listProgress, QStringList({"%p% 1..2", "1", "2", "end"}));
    }
}

TEST(PeakList, IsWrittenInColumnsAndReadsBack)
{
    QTemporaryDir folder;
    const QString strFile = folder.filePath("a.pk");
    DataSet data;
    setFrames(data, 3);
    data.m_listPeakFrame = {{peakAt(12, 7.25, 100.04, 1234.56), peakAt(511.96, 0, -3.5, -0.04)},
                            {},
                            {peakAt(4095, 4095, 999999.9, 999999999.9)}};
    data.m_vecPeakGroup = {{{0, 1}, {}}, {}, {{0, 64}}};
    ASSERT_EQ(writePeakList(data, strFile), 1);
    EXPECT_EQ(readBytes(strFile),
              "       1    0     0   12.0    7.2    100.0      1234.6 C000000000000000\n"
              "       2    0     1  512.0    0.0     -3.5        -0.0 0000000000000000\n"
              "       3    2     0 4095.0 4095.0 999999.9 999999999.9 8000000000000000\n");
    CRunReport report;
    ASSERT_EQ(readPeakList(data, strFile, report), 1);
    EXPECT_EQ(storeText(data),
              "12 7.1999998093 100 1234.6 #0 {0,1,}512 0 -3.5 0 #1 {}||4095 4095 1e+06 1e+09 #2 {0,}");
}

TEST(PeakList, LeavesGroupsOfOtherPeaksAsideAndCountsLinesTooWide)
{
    QTemporaryDir folder;
    const QString strFile = folder.filePath("a.pk");
    DataSet data;
    setFrames(data, 2);
    data.m_listPeakFrame = {{peakAt(1, 1, 1, 1)}, {peakAt(2, 2, 1e9, 2)}};
    data.m_vecPeakGroup = {{{5}, {5}}, {{5}}};  // of a list with two peaks on frame 0
    QString strReason;
    ASSERT_EQ(writePeakList(data, strFile, &strReason), 1);
    EXPECT_EQ(readBytes(strFile).count(" 8000000000000000\n"), 2);
    EXPECT_TRUE(strReason.contains("1 lines")) << strReason.toStdString();
    CRecordingReport report;
    EXPECT_EQ(readPeakList(data, strFile, report), 1);
    EXPECT_EQ(data.m_listPeakFrame[1].size(), 0)
        << "the touching line ends the list instead of being misread";
    for (const QString& strBad : {QString(), folder.filePath("none/a.pk"), folder.path()}) {
        EXPECT_EQ(writePeakList(data, strBad), 0);
    }
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("a.pk")) << "no half files";
}

}  // namespace tessera
