#include "frames/peakhunting.h"

#include "frames/intensityextraction.h"
#include "records/pi.h"
#include "tests/frames/frameseries.h"
#include "tests/imagefiles/filesizelimit.h"

namespace tessera {

namespace {

const double g_dfSpot = 2;  // sigma of all spots, pixels

PeakHuntingParameters parameters()
{
    PeakHuntingParameters p = radii(2, 5);
    p.m_dfPeakThreshold = 5;
    p.m_dfIntegrationRadius = 8.9;  // 8 when used
    p.m_dfIntegrationBackground = 3.9;
    return p;
}

/// Spots on whole pixels over a slope; which of them shine depends on the frame. One frame has another size.
struct HuntingSeries : FrameSeries {
    explicit HuntingSeries(int nFrames)
    {
        for (int n = 0; n < nFrames; ++n) {
            add(makeImage(n == 3 ? 200 : 192, 160, [n](int x, int y) {
                double df = 40 + 0.02 * x + 0.01 * y;
                for (int i = 0; i < 12; ++i) {
                    if (shines(i, n)) {
                        df += height(i) * gaussian(x - column(i), y - row(i), g_dfSpot);
                    }
                }
                return df;
            }));
        }
        dataSet.m_listPeakFrame = {{Peak3D()}};
    }
    static bool shines(int i, int nFrame) { return (i + nFrame) % 3 != 0; }
    static int column(int i) { return 30 + 40 * (i % 4); }
    static int row(int i) { return 24 + 45 * (i / 4); }
    static double height(int i) { return 300 + 50 * i; }
    RunEnd run(const PeakHuntingOptions& options)
    {
        report.m_listLine.clear();
        report.m_listSeverity.clear();
        return runPeakHunting(dataSet, parameters(), filters, report, options).end;
    }
};

// The smoothing Gaussian of sigma 0.5 sums to 1.028 on pixels; the disc of 8 pixels and the ring hold all of
// a spot but exp(-8). A slope has no part in the difference.
void expectIntensities(const Peak3D& peak, double dfHeight)
{
    const double dfKernel = std::pow(1 + 2 * std::exp(-2) + 2 * std::exp(-8), 2) * 2 / g_dfPi;
    const double dfVolume = dfHeight * 2 * g_dfPi * g_dfSpot * g_dfSpot * dfKernel;
    EXPECT_NEAR(peak.dfI2D, dfVolume, 0.003 * dfVolume);
    double dfPoint = 0;
    for (int n = 0; n < 25; ++n) {
        const int dx = n % 5 - 2, dy = n / 5 - 2;
        dfPoint += 2 / g_dfPi * gaussian(dx, dy, 0.5) *
                   (40 + 0.02 * (peak.dfX2D + dx) + 0.01 * (peak.dfY2D + dy) +
                    dfHeight * gaussian(dx, dy, g_dfSpot));
    }
    EXPECT_NEAR(peak.dfIPoint, dfPoint, 0.01);
}

/// The second spot of the first row lies in the mask.
void maskSecondSpot(HuntingSeries& series)
{
    series.dataSet.m_maskPeakHunting.listPolygon.append(QPolygonF(QRectF(60, 14, 20, 20)));
}

/// Expects the peaks of a frame in their order.
/// @param nID  of the last one before
void expectSpots(const QList<Peak3D>& listPeak, int nFrame, int& nID)
{
    int nPeak = 0;
    for (int i = 0; i < 12; ++i) {
        if (!HuntingSeries::shines(i, nFrame) || i == 1) {
            continue;
        }
        ASSERT_LT(nPeak, listPeak.size()) << nFrame;
        const Peak3D& peak = listPeak[nPeak++];
        EXPECT_EQ(QPointF(peak.dfX2D, peak.dfY2D), QPointF(HuntingSeries::column(i), HuntingSeries::row(i)));
        EXPECT_EQ(peak.nFrame, nFrame);
        EXPECT_EQ(peak.nID, nID++);
        expectIntensities(peak, HuntingSeries::height(i));
    }
    EXPECT_EQ(nPeak, listPeak.size()) << nFrame;
}

TEST(PeakHunting, FindsTheSpotsInOrderForEveryNumberOfJobs)
{
    const int nFrames = 14;
    HuntingSeries series(nFrames);
    maskSecondSpot(series);
    QByteArray bytesFirst;
    QString strFirst;
    for (int nJobs : {1, 2, 3, 20, 0}) {
        int nShown = 0, nID = 0;
        PeakHuntingOptions options;
        options.nJobs = nJobs;
        options.fnFrameDone = [&](int nFrame, const QList<Peak3D>& listPeak) {
            EXPECT_EQ(nFrame, nShown++);
            EXPECT_EQ(series.dataSet.m_vecFrameImage.at(0)->Width(), nFrame == 3 ? 200 : 192);
            expectSpots(listPeak, nFrame, nID);
        };
        options.fnAfterStored = [&] {
            series.report.addMessage(QString("%1 lists mapped").arg(series.dataSet.m_listPeakFrame.size()));
        };
        ASSERT_EQ(series.run(options), RunEnd::Finished);
        EXPECT_EQ(nShown, nFrames);
        const QString strLog = series.report.log();
        EXPECT_TRUE(strLog.startsWith("blue >Peak hunting started.\n   7 peaks found on frame #   1\n"));
        EXPECT_TRUE(strLog.endsWith("series.pk.\n14 lists mapped\nblue >Peak hunting finished in time."));
        EXPECT_EQ(series.content("series.pk").count('\n'), nID);
        if (nJobs == 1) {
            bytesFirst = series.content("series.pk");
            strFirst = strLog;
        }
        EXPECT_EQ(series.content("series.pk"), bytesFirst) << nJobs;
        EXPECT_EQ(strLog, strFirst) << nJobs;
        QFile::remove(series.dir.filePath("series.pk"));
    }
}

TEST(PeakHunting, PeaksThatAreMeasuredAgainHaveTheSameIntensities)
{
    const int nFrames = 14;
    HuntingSeries series(nFrames);
    maskSecondSpot(series);
    ASSERT_EQ(series.run({}), RunEnd::Finished);
    const QList<QList<Peak3D>>& listHunted = series.dataSet.m_listPeakFrame;
    QVector<QList<Peak3D>> vecPeak = listHunted.toVector();
    for (QList<Peak3D>& listPeak : vecPeak) {
        for (Peak3D& peak : listPeak) {
            peak.dfIPoint = peak.dfI2D = -1;
        }
    }
    ASSERT_EQ(
        extractIntensity(series.dataSet, vecPeak, parameters(), {8, 3, 1}, series.filters, series.report).end,
        RunEnd::Finished);
    for (int n = 0; n < nFrames; ++n) {
        for (int i = 0; i < vecPeak[n].size(); ++i) {
            EXPECT_EQ(vecPeak[n][i].dfIPoint, listHunted[n][i].dfIPoint);
            EXPECT_EQ(vecPeak[n][i].dfI2D, listHunted[n][i].dfI2D);
        }
    }
}

TEST(PeakHunting, ARunThatEndsEarlyChangesNothing)
{
    for (int nJobs : {1, 3}) {
        HuntingSeries series(8);
        PeakHuntingOptions options;
        options.nJobs = nJobs;
        const auto expectUntouched = [&](int nFramesSaid, RunEnd end) {
            EXPECT_EQ(series.run(options), end);
            EXPECT_EQ(series.dataSet.m_listPeakFrame.size(), 1);
            EXPECT_TRUE(series.content("series.pk").isNull());
            EXPECT_TRUE(series.report.log().endsWith("red >Peak hunting did not finish."));
            EXPECT_EQ(series.report.log().count("peaks found"), nFramesSaid);
        };
        for (int nGoOn : {0, 3, 7}) {  // the question before the first frame, then one after each
            series.report.m_nStopAfter = nGoOn;
            expectUntouched(nGoOn, RunEnd::Stopped);
        }
        series.report.m_nStopAfter = -1;
        series.removeFrame(5);
        expectUntouched(5, RunEnd::Failed);
        EXPECT_TRUE(series.report.said("red " + series.dataSet.m_listFrameFile[5] + ": failed to load"));
        series.dataSet.m_listFrameFile.removeAt(5);
        series.report.m_nStopAfter = 7;  // after the last frame: too late to stop anything
        EXPECT_EQ(series.run(options), RunEnd::Finished);
        EXPECT_EQ(series.dataSet.m_listPeakFrame.size(), 7);
    }
}

TEST(PeakHunting, FindingNothingOrAFullDiskCostsNoFormerList)
{
    const QByteArray bytesTwo = "1 0 0 1 1 1 1 4000000000000000\n2 0 1 2 2 2 2 8000000000000000\n";
    HuntingSeries series(1);
    const QString strFile = series.dir.filePath("series.pk");
    writeBytes(strFile, bytesTwo);
    {
        const CFileSizeLimit limit(10);
        ASSERT_EQ(series.run({}), RunEnd::Finished);
    }
    EXPECT_EQ(series.content("series.pk"), bytesTwo);
    EXPECT_TRUE(series.report.said("red Updating peak list file failed."));
    EXPECT_TRUE(series.report.said("red " + strFile + ": File too large"));

    series.add(makeImage(192, 160, [](int, int) { return 40; }));
    series.dataSet.m_listFrameFile.removeFirst();
    for (const bool bFirst : {true, false}) {  // then there is nothing more to keep
        ASSERT_EQ(series.run({}), RunEnd::Finished);
        EXPECT_EQ(series.content("series.pk"), "");
        EXPECT_EQ(series.content("series.pk~"), bytesTwo);
        EXPECT_EQ(
            series.report.said("red No peaks were found. The former peak list is kept as " + strFile + "~."),
            bFirst);
    }
    const QByteArray bytesOne = bytesTwo.left(bytesTwo.size() / 2);
    writeBytes(strFile, bytesOne);
    ASSERT_EQ(series.run({}), RunEnd::Finished);
    EXPECT_EQ(series.content("series.pk"), bytesOne);
    EXPECT_EQ(series.content("series.pk~"), bytesTwo);
    EXPECT_TRUE(series.report.said("red No peaks were found. The former peak list stays"));
}

}  // namespace

}  // namespace tessera
