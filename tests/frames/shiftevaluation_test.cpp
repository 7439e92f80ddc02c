#include "frames/shiftevaluation.h"

#include "frames/shiftjumps.h"
#include "frames/summedmapbeam.h"
#include "imaging/acmlfft.h"
#include "imaging/imageconversion.h"
#include "imaging/imageshifts.h"
#include "tests/frames/frameseries.h"

namespace tessera {

namespace {

const QPointF g_ptBeam(103.3, 96.6);  // on the first frame
const QList<QPointF> g_listDrift{{0, 0}, {0.5, -0.25}, {1.3, 0.6}, {-2.1, 3.4}, {-5.75, -4.5}, {0, 0}};

/// A broad beam that drifts, over some noise, and reflections that stand on single frames only.
struct DriftSeries : FrameSeries {
    DriftSeries()
    {
        std::mt19937 random(11);
        std::normal_distribution<double> noise(50, 5);
        for (int i = 0; i < g_listDrift.size(); ++i) {
            const QPointF pt = g_ptBeam + g_listDrift[i];
            CImgObj<float> img = makeImage(220, 200, [&](int x, int y) {
                return noise(random) + 5000 / (1 + (std::pow(x - pt.x(), 2) + std::pow(y - pt.y(), 2)) / 36) +
                       800 * gaussian(x - 60 - 15 * i, y - 70, 2);
            });
            img.Data()[40 * 220 + 50] = i == 2 ? std::nanf("") : 50.f;  // costs no more than itself
            add(img);
        }
        dataSet.m_listShift = {QPointF(9, 9)};
        dataSet.m_dfCenterX = 1;
        dataSet.m_dfCenterY = 2;
    }
    bool untouched() const
    {
        return dataSet.m_listShift == QList<QPointF>{QPointF(9, 9)} && dataSet.m_dfCenterX == 1 &&
               dataSet.m_dfCenterY == 2 && content("series.sc").isNull();
    }
};

TEST(ShiftEvaluation, RecoversTheDriftAndTheBeam)
{
    for (double dfSide : {128.0, 151.0}) {  // odd sides are lowered by one
        DriftSeries series;
        const DataSet& dataSet = series.dataSet;
        int nDone = 0;
        const auto done = [&](int nFrame, const QPointF& pt, const CImgObj<float>& img) {
            EXPECT_EQ(nFrame, nDone++);
            const QPointF ptOff = pt - g_listDrift[nFrame];
            EXPECT_LT(std::hypot(ptOff.x(), ptOff.y()), nFrame == 0 ? 1e-9 : 0.07) << nFrame;
            EXPECT_EQ(img.Width(), int(dfSide) / 2 * 2);
            double dfFine = 0;  // waves of 4 pixels, well above what the mask lets through
            for (int i = 0; i < 128 * 128 && dfSide == 128; i += 2) {
                dfFine += double(img.Data()[i] * (i % 4 ? -1 : 1));
            }
            EXPECT_NEAR(dfFine, 0, 5);
        };
        const QRectF rcRegion(40, 30, dfSide, 1);
        ASSERT_EQ(runShiftEvaluation(series.dataSet, rcRegion, series.report, {}, done).end,
                  RunEnd::Finished);
        EXPECT_EQ(nDone, g_listDrift.size());
        EXPECT_EQ(dataSet.m_listShift.size(), g_listDrift.size());
        EXPECT_LT(std::hypot(dataSet.m_dfCenterX - g_ptBeam.x(), dataSet.m_dfCenterY - g_ptBeam.y()), 0.2);
        EXPECT_EQ(series.content("series.sc").count('\n'), 1 + g_listDrift.size());
        const QString strLog = series.report.log();
        EXPECT_TRUE(strLog.startsWith(QString("Reference region: (40, 30) %1×1\n").arg(dfSide)));
        EXPECT_TRUE(strLog.endsWith("blue >Image shift evaluation finished in time."));
        EXPECT_TRUE(strLog.contains(QRegularExpression(
            "summed map: \\(103, 9[67]\\)\\n.*fitting of the summed map:  \\(  103[.][23].*\\n"
            "Shift correction data saved to ")))
            << strLog.toStdString();
    }
}

// Pixels are cut at whole places: the beam does not move with the fraction of the region's.
TEST(ShiftEvaluation, IsTheSameForEveryNumberOfJobsAndFractionOfThePlace)
{
    const QRectF rcRegion(40, 30, 151, 1);
    DriftSeries series, jobs, fractional;
    ASSERT_EQ(runShiftEvaluation(series.dataSet, rcRegion, series.report).end, RunEnd::Finished);
    ShiftEvaluationOptions options;
    options.nJobs = 3;
    ASSERT_EQ(runShiftEvaluation(jobs.dataSet, rcRegion, jobs.report, options).end, RunEnd::Finished);
    EXPECT_EQ(jobs.content("series.sc"), series.content("series.sc"));
    EXPECT_EQ(jobs.report.log().count('\n'), series.report.log().count('\n'));
    ASSERT_EQ(runShiftEvaluation(fractional.dataSet, rcRegion.translated(0.75, 0.5), jobs.report).end,
              RunEnd::Finished);
    EXPECT_EQ(fractional.content("series.sc"), series.content("series.sc"));
}

TEST(ShiftEvaluation, EarlyEndsKeepWhatTheCallerAsksForAndStopsNothing)
{
    const QRectF rcWhole(40, 30, 128, 128);
    const struct {
        QRectF rc;
        int nMissing, nStopAfter;  // −1: none
        int nReached;              // frames whose shifts may be kept; −1: whatever is asked for, none
        const char* pLine;
    } aRow[] = {{rcWhole, 3, -1, 3, "red Failed to load "},
                {rcWhole, -1, 4, -1, "ended after 5 of 6 frames."},
                {QRectF(93, 0, 128, 128), -1, -1, 0, "does not lie inside frame #1 of 220×200 pixels"},
                {QRectF(std::nan(""), 0, 64, 64), -1, -1, 0, "does not lie inside frame #1"},
                {QRectF(0, 0, 15, 64), -1, -1, -1, "red The reference region must have"},
                {QRectF(0, 0, 1e300, 1), -1, -1, 0, "does not lie inside frame #1"}};
    for (const auto& row : aRow) {
        for (bool bKeep : {true, false}) {
            DriftSeries series;
            if (row.nMissing >= 0) {
                series.removeFrame(row.nMissing);
            }
            series.report.m_nStopAfter = row.nStopAfter;
            ShiftEvaluationOptions options;
            options.bKeepPartial = bKeep;
            options.nJobs = bKeep ? 3 : 1;  // as the window and the driver with one job have them
            const RunOutcome outcome = runShiftEvaluation(series.dataSet, row.rc, series.report, options);
            EXPECT_EQ(outcome.end, row.nStopAfter >= 0    ? RunEnd::Stopped
                                   : row.rc.width() == 15 ? RunEnd::Refused
                                                          : RunEnd::Failed);
            EXPECT_EQ(outcome.strReason.isEmpty(), row.nStopAfter >= 0);
            EXPECT_TRUE(series.report.said(row.pLine)) << series.report.log().toStdString();
            if (!bKeep || row.nReached < 0) {
                EXPECT_TRUE(series.untouched()) << row.pLine;
                continue;
            }
            EXPECT_EQ(series.dataSet.m_listShift.size(), row.nReached);
            EXPECT_EQ(series.content("series.sc").count('\n'), row.nReached ? 1 + row.nReached : 0);
            EXPECT_EQ(series.report.said("blue >Image shift evaluation finished"), row.nReached > 0);
            EXPECT_NEAR(series.dataSet.m_dfCenterX, row.nReached ? g_ptBeam.x() : 1, 0.2);
        }
    }
}

TEST(FindBeamInSummedMap, PrefersTheBroadMaximumToTheHighOne)
{
    // after a blur of sigma 20 a volume counts, not a height
    const CImgObj<float> img = makeImage(128, 96, [](int x, int y) {
        return 100 * gaussian(x - 40, y - 50, 6) + (x == 100 && y == 20 ? 5000 : 0);
    });
    CImgObj<COMPLEX> imgFT;
    CAcmlFft fft;
    ComplexFromFloat(img, imgFT);
    fft.Transform(imgFT.Data(), 128, 96, -1);
    ShiftCenter(imgFT.Data(), 128, 96);
    int nX = -1, nY = -1;
    ASSERT_TRUE(findBeamInSummedMap(imgFT, nX, nY));
    EXPECT_LT(std::hypot(nX - 40, nY - 50), 4);
}

TEST(ShiftJumps, NamesTheFramesThatStandApartAndNoOthers)
{
    QList<QPointF> listDrift;
    for (int i = 0; i < 60; ++i) {
        listDrift.append({0.8 * i, 12 * std::sin(i * 0.2)});
    }
    EXPECT_EQ(findShiftJumps(listDrift, 10), QList<int>());
    EXPECT_EQ(findShiftJumps(listDrift.mid(0, 4), 0.001), QList<int>());
    for (int nMoved : {0, 1, 2, 30, 58, 59}) {
        QList<QPointF> list = listDrift;
        list[nMoved] += QPointF(0, -35);
        EXPECT_EQ(findShiftJumps(list, 10), QList<int>{nMoved}) << nMoved;
    }
    listDrift[20] += QPointF(40, 0);
    listDrift[21] += QPointF(40, 0);
    EXPECT_TRUE(findShiftJumps(listDrift, 10).contains(20));
}

}  // namespace

}  // namespace tessera
