// Which frames are taken, and by which choice results were made.
#include "dataset/serieschoice.h"
#include "dataset/serieschoicefile.h"
#include "dataset/seriesreading.h"
#include "tests/filebytes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <numeric>

namespace tessera {

namespace {

QList<int> upTo(int nFirst, int nLast)
{
    QList<int> list;
    for (int n = nFirst; n <= nLast; ++n) {
        list.append(n);
    }
    return list;
}

SeriesChoice choiceOf(const QString& strFrames, const QString& strSkip, int nSum = 1, int nBin = 1)
{
    SeriesChoice choice;
    choice.listFrames = strFrames.isEmpty() ? QList<FrameRange>() : frameRanges(strFrames).value();
    choice.listSkipped = strSkip.isEmpty() ? QList<FrameRange>() : frameRanges(strSkip).value();
    choice.nSum = nSum;
    choice.nBin = nBin;
    return choice;
}

}  // namespace

TEST(SeriesChoice, RangesAreThoseThatTheirTextSays)
{
    for (const char* pszBad :
         {"", "0", "5-3", "-", "a", "3,", "1-2-3", "+4", "1e3", "99999999999", "1;2", "-0"}) {
        QString strReason;
        EXPECT_FALSE(frameRanges(QLatin1String(pszBad), &strReason)) << pszBad;
        EXPECT_FALSE(strReason.isEmpty()) << pszBad;
    }
    EXPECT_EQ(frameRangesText(frameRanges(" 3 , 7 - 9,12-,-2").value()), QString("3,7-9,12-,1-2"));

    EXPECT_EQ(takenFrames(choiceOf("2-4,8-,3", "9"), 10), (QList<int>{1, 2, 3, 7, 9}));
    EXPECT_EQ(takenFrames(choiceOf("", "1-3"), 5), (QList<int>{3, 4}));
    const struct {
        const char *pszFrames, *pszSkip;
    } aNone[] = {{"2-11", ""}, {"", "11"}, {"11-", ""}, {"2-3", "1-5"}, {"", "1-"}};
    for (const auto& none : aNone) {
        QString strReason;
        EXPECT_TRUE(takenFrames(choiceOf(none.pszFrames, none.pszSkip), 10, &strReason).isEmpty());
        EXPECT_FALSE(strReason.isEmpty()) << none.pszFrames << ' ' << none.pszSkip;
    }

    // Sums do not reach over a hole, and none is of fewer frames than the others.
    EXPECT_EQ(sumStarts(upTo(0, 6) + upTo(9, 13), 3), (QList<int>{0, 3, 9}));
    EXPECT_EQ(sumStarts({0, 2, 4}, 2), QList<int>());
    EXPECT_EQ(sumStarts(upTo(4, 8), 1), upTo(4, 8));
}

TEST(SeriesChoice, TiltsPixelSizeAndProjectFollow)
{
    DataSet data;
    for (int n = 0; n < 9; ++n) {
        data.m_listFrameFile.append(QString("/nowhere/f%1.mrc").arg(n));
        data.m_listStageTilt.append(n);
        data.m_listBeamTilt.append(0.25 * n);
        data.m_listOverallTilt.append(1.25 * n);
    }
    data.m_dfPixelSize = 0.004;
    data.m_distortion.dfRadius = 256;
    const SeriesData before = data;
    CRunReport report;
    QString strReason;
    EXPECT_FALSE(takeSeriesChoice(data, choiceOf("1-4", "", 5), report, &strReason));
    EXPECT_EQ(data.m_listFrameFile, before.m_listFrameFile);
    ASSERT_TRUE(takeSeriesChoice(data, choiceOf("2-", "5", 2, 2), report, &strReason));
    EXPECT_EQ(data.m_listFrameFile, (QStringList{"/nowhere/f1.mrc", "/nowhere/f5.mrc", "/nowhere/f7.mrc"}));
    EXPECT_EQ(data.m_listStageTilt, (QList<double>{1.5, 5.5, 7.5}));
    EXPECT_EQ(data.m_listOverallTilt, (QList<double>{1.875, 6.875, 9.375}));
    EXPECT_EQ(data.m_dfPixelSize, 0.008);
    EXPECT_EQ(data.m_distortion.dfRadius, 128);
    EXPECT_TRUE(data.m_reading.isHoleBehind(0));
    EXPECT_FALSE(data.m_reading.isHoleBehind(1));
    EXPECT_EQ(data.m_reading.stepOf(0), 2.5);

    const SourceSeries source = sourceSeries(data);
    EXPECT_EQ(source.listFrame, before.m_listFrameFile);
    EXPECT_EQ(source.tilts.listOverall, before.m_listOverallTilt);
    EXPECT_EQ(source.dfPixelSize, 0.004);
    EXPECT_EQ(source.distortion.dfRadius, 256);
    EXPECT_EQ(source.listFrameOf, (QList<int>{0, 0, 0, 0, 0, 1, 1, 2, 2}));
}

TEST(SeriesChoice, MasksCoverEachBinThatHasAPartOfThem)
{
    // Columns 261 and 262 of a camera, dead from the top to row 9: of the bins 130 and 131, rows 0 to 4.
    MaskData mask;
    mask.listPolygon = {QPolygonF(QRectF(QPointF(260.5, -0.5), QPointF(262.5, 9.5))),
                        QPolygonF({QPointF(0.5, 0.5), QPointF(8.5, 0.5), QPointF(4.5, 6.5)})};
    const MaskData binned = maskInBins(mask, 2);
    EXPECT_EQ(binned.listPolygon[0].boundingRect(), QRectF(QPointF(129.5, -0.5), QPointF(131.5, 4.5)));
    EXPECT_EQ(binned.listPolygon[1][2], QPointF(2, 3));
    EXPECT_EQ(maskInFile(binned, 2).listPolygon[1], mask.listPolygon[1]);
    EXPECT_EQ(maskInBins(mask, 1).listPolygon, mask.listPolygon);
}

TEST(SeriesChoice, ResultsAreKnownByTheChoiceThatMadeThem)
{
    QTemporaryDir dir;
    const QString strBase = dir.filePath("p"), strPeaks = strBase + ".pk", strShifts = strBase + ".sc";
    const SeriesChoice plain, binned = choiceOf("", "", 1, 2), summed = choiceOf("-20", "3", 4);
    QString strReason;
    ASSERT_TRUE(keepSeriesChoice(strBase, plain));
    EXPECT_FALSE(QFileInfo::exists(seriesChoiceFile(strBase))) << "nothing to be told";
    writeBytes(strPeaks, "peaks of the series as it comes");
    EXPECT_TRUE(isMadeByChoice(strPeaks, plain));

    ASSERT_TRUE(keepSeriesChoice(strBase, binned, &strReason)) << strReason.toStdString();
    EXPECT_EQ(readSeriesChoice(strBase).value(), binned);
    EXPECT_TRUE(isMadeByChoice(strPeaks, plain));
    EXPECT_FALSE(isMadeByChoice(strPeaks, binned));
    writeBytes(strShifts, "shifts of bins");
    EXPECT_TRUE(isMadeByChoice(strShifts, binned));

    ASSERT_TRUE(keepSeriesChoice(strBase, summed));
    EXPECT_EQ(readSeriesChoice(strBase).value(), summed);
    EXPECT_TRUE(isMadeByChoice(strShifts, binned)) << "and not by the one in between";
    EXPECT_TRUE(isMadeByChoice(strPeaks, plain));
    writeBytes(strPeaks, "peaks of sums");
    EXPECT_TRUE(isMadeByChoice(strPeaks, summed));

    // Back to the first: only the peaks, which were replaced, are of another choice; then nothing is.
    ASSERT_TRUE(keepSeriesChoice(strBase, binned));
    EXPECT_TRUE(isMadeByChoice(strShifts, binned));
    EXPECT_FALSE(isMadeByChoice(strPeaks, binned));
    QFile::remove(strShifts);
    QFile::remove(strPeaks);
    ASSERT_TRUE(keepSeriesChoice(strBase, plain));
    EXPECT_FALSE(QFileInfo::exists(seriesChoiceFile(strBase)));
}

TEST(SeriesChoice, OfAFileThatIsNotValidIsNeitherUsedNorReplaced)
{
    QTemporaryDir dir;
    const QString strBase = dir.filePath("p");
    QString strReason;
    for (const char* bytes :
         {"{}", "[", "{\"format\":\"Tessera series\",\"version\":1,\"bin\":0}",
          "{\"format\":\"Tessera series\",\"version\":1,\"skip\":\"x\"}",
          // Of another type a value would count as that of a plain series.
          "{\"format\":\"Tessera series\",\"version\":1,\"bin\":\"2\"}",
          "{\"format\":\"Tessera series\",\"version\":1,\"sum\":null}",
          "{\"format\":\"Tessera series\",\"version\":1,\"frames\":[5,60]}",
          "{\"format\":\"Tessera series\",\"version\":1,\"skip\":3}",
          "{\"format\":\"Tessera series\",\"version\":1,\"former\":{}}",
          "{\"format\":\"Tessera series\",\"version\":1,\"former\":[{\"file\":\"p.pk\"}]}"}) {
        writeBytes(seriesChoiceFile(strBase), bytes);
        EXPECT_FALSE(readSeriesChoice(strBase, &strReason)) << bytes;
        EXPECT_FALSE(keepSeriesChoice(strBase, choiceOf("", "", 1, 2), &strReason));
        EXPECT_EQ(readBytes(seriesChoiceFile(strBase)), QByteArray(bytes));
    }
}

}  // namespace tessera
