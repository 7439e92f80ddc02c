#include "frames/peakhunting.h"

#include "frames/frameseries.h"

#include <gtest/gtest.h>

namespace {

PeakHuntingParameters parameters()
{
    PeakHuntingParameters p;
    p.m_dfPeakRadius = 2;
    p.m_dfBackgroundRadius = 5;
    p.m_dfPeakThreshold = 5;
    p.m_dfIntegrationRadius = 8.9;  // 8 when used
    p.m_dfIntegrationBackground = 3.9;
    return p;
}

const double g_dfSpot = 2;  // sigma of all spots, pixels

/// Spots on whole pixels over a slope; which of them shine depends on the frame.
CImgObj<float> frameWithSpots(int nFrame, int nWidth, int nHeight)
{
    return makeImage(nWidth, nHeight, [&](int x, int y) {
        double df = 40 + 0.02 * x + 0.01 * y;
        for (int i = 0; i < 12; ++i)
            if ((i + nFrame) % 3 != 0)
                df += (300 + 50 * i) * gaussian(x - (30 + 40 * (i % 4)), y - (24 + 45 * (i / 4)), g_dfSpot);
        return df;
    });
}

struct HuntingSeries : FrameSeries {
    explicit HuntingSeries(int nFrames)
    {
        for (int i = 0; i < nFrames; ++i)
            add(frameWithSpots(i, i == 3 ? 200 : 192, 160));  // one frame of another size
        Peak3D peakOld;
        peakOld.nFrame = 77;
        dataSet.m_listPeakFrame = {{peakOld}};
    }
    bool stillOld() const
    {
        return dataSet.m_listPeakFrame.size() == 1 && dataSet.m_listPeakFrame[0][0].nFrame == 77;
    }
};

TEST(PeakHunting, FindsTheSpotsWithTheirIntensitiesInOrder)
{
    HuntingSeries series(6);
    CRecordingReport report;
    CPeakFilters filters;
    // the second spot of the first row lies in the mask
    series.dataSet.m_maskPeakHunting.listPolygon.append(QPolygonF(QRectF(60, 14, 20, 20)));
    ASSERT_TRUE(runPeakHunting(series.dataSet, parameters(), filters, report));
    ASSERT_EQ(series.dataSet.m_listPeakFrame.size(), 6);

    int nID = 0;
    for (int nFrame = 0; nFrame < 6; ++nFrame) {
        const QList<Peak3D>& listPeak = series.dataSet.m_listPeakFrame[nFrame];
        int nPeak = 0;
        for (int i = 0; i < 12; ++i) {
            if ((i + nFrame) % 3 == 0 || i == 1)
                continue;
            ASSERT_LT(nPeak, listPeak.size()) << nFrame;
            const Peak3D& peak = listPeak[nPeak++];
            EXPECT_EQ(peak.dfX2D, 30 + 40 * (i % 4));
            EXPECT_EQ(peak.dfY2D, 24 + 45 * (i / 4));
            EXPECT_EQ(peak.nFrame, nFrame);
            EXPECT_EQ(peak.nID, nID++);
            // The smoothing Gaussian of sigma 0.5 sums to 1.028 on pixels; the disc of 8 pixels and the
            // ring hold all of the spot but exp(-8). A slope has no part in the difference.
            const double dfHeight = 300 + 50 * i;
            const double dfKernel = std::pow(1 + 2 * std::exp(-2) + 2 * std::exp(-8), 2) * 2 / M_PI;
            const double dfVolume = dfHeight * 2 * M_PI * g_dfSpot * g_dfSpot * dfKernel;
            EXPECT_NEAR(peak.dfI2D, dfVolume, 0.003 * dfVolume);
            double dfPoint = 0;
            for (int d = -2; d <= 2; ++d)
                for (int e = -2; e <= 2; ++e)
                    dfPoint += 2 / M_PI * gaussian(d, e, 0.5) *
                               (40 + 0.02 * (peak.dfX2D + d) + 0.01 * (peak.dfY2D + e) +
                                dfHeight * gaussian(d, e, g_dfSpot));
            EXPECT_NEAR(peak.dfIPoint, dfPoint, 0.01);
        }
        EXPECT_EQ(nPeak, listPeak.size()) << nFrame;
    }
    EXPECT_TRUE(report.log().startsWith("blue >Peak hunting started.\n   7 peaks found on frame #   1\n"));
    EXPECT_TRUE(report.log().endsWith("series.pk.\nblue >Peak hunting finished in time."));
    EXPECT_EQ(series.content("series.pk").count('\n'), nID);
}

TEST(PeakHunting, IsTheSameForEveryNumberOfJobs)
{
    HuntingSeries series(14);
    QByteArray bytesFirst;
    QString strFirst;
    for (int nJobs : {1, 2, 3, 20, 0}) {
        CRecordingReport report;
        CPeakFilters filters;
        QList<int> listShown;
        PeakHuntingOptions options;
        options.nJobs = nJobs;
        options.fnFrameDone = [&](int nFrame, const QList<Peak3D>& listPeak) {
            listShown.append(nFrame);
            EXPECT_FALSE(listPeak.isEmpty());
            ASSERT_EQ(series.dataSet.m_vecFrameImage.size(), 1u);
            EXPECT_EQ(series.dataSet.m_vecFrameImage[0]->Width(), nFrame == 3 ? 200 : 192);
        };
        options.fnAfterStored = [&] {
            report.addMessage(QString("%1 lists mapped").arg(series.dataSet.m_listPeakFrame.size()),
                              Qt::black);
        };
        ASSERT_TRUE(runPeakHunting(series.dataSet, parameters(), filters, report, options));
        EXPECT_EQ(listShown.size(), 14);
        EXPECT_TRUE(std::is_sorted(listShown.begin(), listShown.end()));
        EXPECT_TRUE(report.said("14 lists mapped\nblue >Peak hunting finished"));
        if (nJobs == 1) {
            bytesFirst = series.content("series.pk");
            strFirst = report.log();
            EXPECT_GT(bytesFirst.size(), 1000);
        }
        EXPECT_EQ(series.content("series.pk"), bytesFirst) << nJobs;
        EXPECT_EQ(report.log(), strFirst) << nJobs;
        QFile::remove(series.dir.filePath("series.pk"));
    }
}

TEST(PeakHunting, ARunThatEndsEarlyChangesNothing)
{
    for (int nJobs : {1, 3}) {
        PeakHuntingOptions options;
        options.nJobs = nJobs;
        CPeakFilters filters;
        HuntingSeries series(8);
        const auto expectUntouched = [&](CRecordingReport& report, int nFramesSaid) {
            EXPECT_TRUE(series.stillOld());
            EXPECT_TRUE(series.content("series.pk").isNull());
            EXPECT_FALSE(series.dataSet.m_bHuntingRunning);
            EXPECT_TRUE(report.log().endsWith("red >Peak hunting did not finish."))
                << report.log().toStdString();
            EXPECT_EQ(report.log().count("peaks found"), nFramesSaid);
        };
        for (int nGoOn : {0, 3, 7}) {  // the question before the first frame, then one after each
            CRecordingReport report;
            report.m_nStopAfter = nGoOn;
            EXPECT_FALSE(runPeakHunting(series.dataSet, parameters(), filters, report, options));
            expectUntouched(report, nGoOn);
        }
        {
            CRecordingReport report;
            report.m_nStopAfter = 8;  // after the last frame: too late to stop anything
            HuntingSeries seriesLate(8);
            EXPECT_TRUE(runPeakHunting(seriesLate.dataSet, parameters(), filters, report, options));
            EXPECT_FALSE(seriesLate.stillOld());
        }
        {  // a second call from within asks the run to stop
            CRecordingReport report;
            PeakHuntingOptions optionsAgain = options;
            optionsAgain.fnFrameDone = [&](int nFrame, const QList<Peak3D>&) {
                if (nFrame == 4) {
                    EXPECT_FALSE(runPeakHunting(series.dataSet, parameters(), filters, report, options));
                }
            };
            EXPECT_FALSE(runPeakHunting(series.dataSet, parameters(), filters, report, optionsAgain));
            expectUntouched(report, 5);
        }
        {
            CRecordingReport report;
            QFile::remove(series.dataSet.m_listFrameFile[5]);
            EXPECT_FALSE(runPeakHunting(series.dataSet, parameters(), filters, report, options));
            expectUntouched(report, 5);
            EXPECT_TRUE(report.said("red " + series.dataSet.m_listFrameFile[5] + ": failed to load"));
        }
    }
}

TEST(PeakHunting, GivesNoPeaksWhereOneInAHundredPixelsIsAMaximum)
{
    FrameSeries series;
    std::uint32_t nState = 1;
    series.add(makeImage(64, 64, [&](int, int) {
        nState = nState * 1664525u + 1013904223u;
        return double(nState >> 16);
    }));
    PeakHuntingParameters noise = parameters();
    noise.m_dfPeakRadius = 0;
    noise.m_dfPeakThreshold = -100;
    CRecordingReport report;
    CPeakFilters filters;
    EXPECT_TRUE(runPeakHunting(series.dataSet, noise, filters, report));
    EXPECT_EQ(series.dataSet.m_listPeakFrame[0].size(), 0);
    noise.m_dfPeakThreshold = 32200;  // the highest alone
    EXPECT_TRUE(runPeakHunting(series.dataSet, noise, filters, report));
    EXPECT_GT(series.dataSet.m_listPeakFrame[0].size(), 5);
}

}  // namespace
