#include "frames/peakhunting.h"

#include "frames/intensityextraction.h"
#include "records/pi.h"
#include "tests/frames/frameseries.h"
#include "tests/imagefiles/filesizelimit.h"

namespace tessera {

namespace {

const double g_dfSpotSigma = 2;  // of all spots, pixels

PeakHuntingParameters parameters()
{
    PeakHuntingParameters p = radii(2, 5);
    p.m_dfPeakThreshold = 5;
    // The search integrates over whole pixels and cuts the fractions off: a disc of radius 8 and a ring 3
    // wide.
    p.m_dfIntegrationRadius = 8.9;
    p.m_dfIntegrationBackground = 3.9;
    return p;
}

/// Frames with twelve Gaussian spots in four columns and three rows, over a background that rises evenly
/// across the frame. The centres are whole pixels. Each frame lacks another third of the spots, and frame 3
/// is wider than the others.
struct HuntingSeries : FrameSeries {
    explicit HuntingSeries(int nFrames)
    {
        for (int n = 0; n < nFrames; ++n) {
            add(makeImage(n == 3 ? 200 : 192, 160, [n](int x, int y) {
                double df = 40 + 0.02 * x + 0.01 * y;
                for (int i = 0; i < 12; ++i) {
                    if (shines(i, n)) {
                        df += height(i) * gaussian(x - column(i), y - row(i), g_dfSpotSigma);
                    }
                }
                return df;
            }));
        }
        dataSet.m_listPeakFrame = {{Peak3D()}};  // a former result: one frame with one peak
    }
    /// Whether spot i is on a frame.
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

/// Expects the two intensities of a spot in closed form.
///
/// Both are measured on the frame after smoothing by a Gaussian of sigma 0.5 pixels. Its values on whole
/// pixels are those of the continuous function with the factor 1/(2πσ²) = 2/π, so that they sum to 1.029
/// (dfKernel) and not to 1. dfI2D is the disc of radius 8 minus the background of the ring. The disc is four
/// sigmas of a spot wide, so it holds all of the spot's volume but exp(-8), and a background that rises
/// evenly has the same mean in disc and ring. dfIPoint is the smoothed frame at the peak itself.
void expectIntensities(const Peak3D& peak, double dfHeight)
{
    const double dfKernel = std::pow(1 + 2 * std::exp(-2) + 2 * std::exp(-8), 2) * 2 / g_dfPi;
    const double dfVolume = dfHeight * 2 * g_dfPi * g_dfSpotSigma * g_dfSpotSigma * dfKernel;
    EXPECT_NEAR(peak.dfI2D, dfVolume, 0.003 * dfVolume);
    double dfPoint = 0;
    for (int n = 0; n < 25; ++n) {  // the 5 × 5 pixels around the peak; further out the kernel is nothing
        const int dx = n % 5 - 2, dy = n / 5 - 2;
        dfPoint += 2 / g_dfPi * gaussian(dx, dy, 0.5) *
                   (40 + 0.02 * (peak.dfX2D + dx) + 0.01 * (peak.dfY2D + dy) +
                    dfHeight * gaussian(dx, dy, g_dfSpotSigma));
    }
    EXPECT_NEAR(peak.dfIPoint, dfPoint, 0.01);
}

/// Masks the second spot of the first row (i = 1), at column 70 and row 24.
void maskSecondSpot(HuntingSeries& series)
{
    series.dataSet.m_maskPeakHunting.listPolygon.append(QPolygonF(QRectF(60, 14, 20, 20)));
}

/// Expects the peaks of a frame row by row, without the masked spot.
/// @param nID  running number of the first peak expected here; afterwards that of the next frame's first peak
void expectSpots(const QList<Peak3D>& listPeak, int nFrame, int& nID)
{
    int nPeak = 0;
    for (int i = 0; i < 12; ++i) {
        if (!HuntingSeries::shines(i, nFrame) || i == 1) {  // 1 is masked
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
    for (int nJobs : {1, 2, 3, 20, 0}) {  // also more jobs than frames, and none
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
        // Runs, and expects the former peaks, no file, and a line of the log for each frame that was done.
        const auto expectUntouched = [&](int nFramesSaid, RunEnd end) {
            EXPECT_EQ(series.run(options), end);
            EXPECT_EQ(series.dataSet.m_listPeakFrame.size(), 1);
            EXPECT_TRUE(series.content("series.pk").isNull());
            EXPECT_TRUE(series.report.log().endsWith("red >Peak hunting did not finish."));
            EXPECT_EQ(series.report.log().count("peaks found"), nFramesSaid);
        };
        // The run asks whether to go on before the first frame and after each one. So as many frames are done
        // as questions are answered with yes.
        for (int nYes : {0, 3, 7}) {
            series.report.m_nStopAfter = nYes;
            expectUntouched(nYes, RunEnd::Stopped);
        }
        series.report.m_nStopAfter = -1;
        series.removeFrame(5);
        expectUntouched(5, RunEnd::Failed);
        EXPECT_TRUE(series.report.said("red " + series.dataSet.m_listFrameFile[5] + ": failed to load"));
        series.dataSet.m_listFrameFile.removeAt(5);
        // Seven frames are left. The seven times yes are before the first frame and after each of six; the no
        // after the last frame has no effect.
        series.report.m_nStopAfter = 7;
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
        const CFileSizeLimit limit(10);  // bytes; stands for a full disk
        ASSERT_EQ(series.run({}), RunEnd::Finished);
    }
    EXPECT_EQ(series.content("series.pk"), bytesTwo);
    EXPECT_TRUE(series.report.said("red Updating peak list file failed."));
    EXPECT_TRUE(series.report.said("red " + strFile + ": File too large"));

    // The only frame is now one without spots. The first run copies the former list to "series.pk~". At
    // the second run the former list is empty, so there is nothing to keep and nothing to say.
    series.add(makeImage(192, 160, [](int, int) { return 40; }));
    series.dataSet.m_listFrameFile.removeFirst();
    for (const bool bFirst : {true, false}) {
        ASSERT_EQ(series.run({}), RunEnd::Finished);
        EXPECT_EQ(series.content("series.pk"), "");
        EXPECT_EQ(series.content("series.pk~"), bytesTwo);
        EXPECT_EQ(
            series.report.said("red No peaks were found. The former peak list is kept as " + strFile + "~."),
            bFirst);
    }
    // A list that is shorter than the one in "series.pk~" does not replace it there, and stays in its place.
    const QByteArray bytesOne = bytesTwo.left(bytesTwo.size() / 2);
    writeBytes(strFile, bytesOne);
    ASSERT_EQ(series.run({}), RunEnd::Finished);
    EXPECT_EQ(series.content("series.pk"), bytesOne);
    EXPECT_EQ(series.content("series.pk~"), bytesTwo);
    EXPECT_TRUE(series.report.said("red No peaks were found. The former peak list stays"));
}

}  // namespace

}  // namespace tessera
