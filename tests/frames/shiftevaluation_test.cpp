#include "frames/shiftevaluation.h"

#include "frames/frameseries.h"
#include "frames/summedmapbeam.h"
#include "imaging/acmlfft.h"
#include "imaging/imageconversion.h"
#include "imaging/imageshifts.h"

#include <gtest/gtest.h>

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
        CRecordingReport report;
        int nDone = 0;
        const auto done = [&](int nFrame, const QPointF& pt, const CImgObj<float>& img) {
            EXPECT_EQ(nFrame, nDone++);
            EXPECT_NEAR(pt.x(), g_listDrift[nFrame].x(), 0.06) << nFrame;
            EXPECT_NEAR(pt.y(), g_listDrift[nFrame].y(), 0.06) << nFrame;
            EXPECT_EQ(img.Width(), int(dfSide) / 2 * 2);
        };
        ASSERT_TRUE(runShiftEvaluation(series.dataSet, QRectF(40, 30, dfSide, 1), report, {}, done));
        EXPECT_EQ(nDone, g_listDrift.size());
        ASSERT_EQ(series.dataSet.m_listShift.size(), g_listDrift.size());
        EXPECT_EQ(series.dataSet.m_listShift[0], QPointF(0, 0));
        EXPECT_NEAR(series.dataSet.m_dfCenterX, g_ptBeam.x(), 0.2);
        EXPECT_NEAR(series.dataSet.m_dfCenterY, g_ptBeam.y(), 0.2);
        EXPECT_EQ(series.content("series.sc").count('\n'), 1 + g_listDrift.size());
        EXPECT_TRUE(report.log().startsWith(QString("Reference region: (40, 30) %1×1\n").arg(dfSide)));
        EXPECT_TRUE(report.log().endsWith("blue >Image shift evaluation finished in time."));
        EXPECT_TRUE(QRegularExpression(
                        "summed map: \\(103, 9[67]\\)\\n.*fitting of the summed map:  \\(  103[.][23].*\\n"
                        "Shift correction data saved to ")
                        .match(report.log())
                        .hasMatch())
            << report.log().toStdString();
    }
}

TEST(ShiftEvaluation, EarlyEndsKeepWhatTheCallerAsksForAndStopsNothing)
{
    const int nStopped = -1;
    const struct {
        std::function<void(DriftSeries&, CRecordingReport&)> fnSpoil;
        int nReached;  // frames whose shifts may be kept
        const char* pLine;
    } aRow[] = {
        {[](DriftSeries& s, CRecordingReport&) { QFile::remove(s.dataSet.m_listFrameFile[3]); }, 3,
         "red Failed to load "},
        {[](DriftSeries&, CRecordingReport& r) { r.m_nStopAfter = 4; }, nStopped,
         "ended after 5 of 6 frames."},
        {[](DriftSeries& s, CRecordingReport&) {
             const CImgObj<float> img = makeImage(20, 30, [](int, int) { return 1; });
             WriteMRC<float>({&img}, s.dataSet.m_listFrameFile[0]);
         },
         0, "does not lie inside frame #1 of 20×30 pixels"},
    };
    for (const auto& row : aRow)
        for (bool bKeep : {true, false}) {
            DriftSeries series;
            CRecordingReport report;
            row.fnSpoil(series, report);
            ShiftEvaluationOptions options;
            options.bKeepPartial = bKeep;
            EXPECT_FALSE(runShiftEvaluation(series.dataSet, QRectF(40, 30, 128, 128), report, options));
            EXPECT_TRUE(report.said(row.pLine)) << report.log().toStdString();
            if (!bKeep || row.nReached == nStopped) {
                EXPECT_TRUE(series.untouched());
                continue;
            }
            EXPECT_EQ(series.dataSet.m_listShift.size(), row.nReached);
            EXPECT_EQ(series.content("series.sc").count('\n'), row.nReached ? 1 + row.nReached : 0);
            EXPECT_EQ(report.said("blue >Image shift evaluation finished"), row.nReached > 0);
            EXPECT_NEAR(series.dataSet.m_dfCenterX, row.nReached ? g_ptBeam.x() : 1, 0.2);
        }
}

TEST(ShiftEvaluation, RefusesRegionsThatHoldNothing)
{
    for (const QRectF& rc :
         {QRectF(-1, 0, 64, 64), QRectF(0, 0, 1e300, 1), QRectF(std::nan(""), 0, 64, 64)}) {
        DriftSeries series;
        CRecordingReport report;
        ShiftEvaluationOptions options;
        options.bKeepPartial = false;
        EXPECT_FALSE(runShiftEvaluation(series.dataSet, rc, report, options));
        EXPECT_TRUE(series.untouched());
        EXPECT_TRUE(report.said("red "));
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
    EXPECT_NEAR(nX, 40, 3);
    EXPECT_NEAR(nY, 50, 3);
}

}  // namespace
