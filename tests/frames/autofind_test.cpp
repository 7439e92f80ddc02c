#include "frames/autoregion.h"
#include "frames/autothreshold.h"
#include "frames/frameseries.h"
#include "frames/framehunt.h"

#include <gtest/gtest.h>

namespace {

/// What may be wrong with the beam of a series and with its detector.
struct Trouble {
    const char* pWhat;
    double dfCorePixels;     ///< radius of a core that reads as a low value
    double dfStopPixels;     ///< radius of a beam stop whose arm goes up
    double dfWander;         ///< pixels to the right over the series
    bool bHot, bCross, bAperture;
    double dfScale;          ///< of all intensities
};

/// Beam with a halo at (230, 300) of 512 × 480; reflections brighter than the halo come and go.
void addFrames(FrameSeries& series, const Trouble& trouble, int nFrames)
{
    std::mt19937 random(17);
    std::uniform_real_distribution<double> place(0, 480);
    std::normal_distribution<double> noise(0, 1);
    for (int i = 0; i < nFrames; ++i) {
        const double dfX = 230 + trouble.dfWander * i / (nFrames - 1), dfY = 300;
        std::vector<QPointF> vecSpot;
        for (int k = 0; k < 25; ++k)
            vecSpot.emplace_back(place(random), place(random));
        CImgObj<float> img = makeImage(512, 480, [&](int x, int y) {
            const double dfR = std::hypot(x - dfX, y - dfY);
            if (trouble.bAperture && std::hypot(x - 256, y - 240) > 235)
                return noise(random);
            double df = 10 + 1500 / (1 + std::pow(dfR / 14, 2)) + 60000 * gaussian(dfR, 0, 3);
            if (trouble.dfCorePixels > 0 && dfR < trouble.dfCorePixels)
                df = -3000;
            if (trouble.dfStopPixels > 0 && (dfR < trouble.dfStopPixels || (std::abs(x - dfX) < 6 && y < dfY)))
                df = 0;
            return trouble.dfScale * (df + 3 * noise(random));
        });
        for (size_t k = 0; k < vecSpot.size(); ++k)
            for (int d = 0; d < 225; ++d) {
                const int x = int(vecSpot[k].x()) + d % 15 - 7, y = int(vecSpot[k].y()) + d / 15 - 7;
                if (x >= 0 && y >= 0)
                    img.Data()[y * 512 + x] += float(trouble.dfScale * (k == 0 ? 20000 : 900) * gaussian(d % 15 - 7, d / 15 - 7, 2));
            }
        for (int n = 0; trouble.bHot && n < 60; ++n)
            img.Data()[(n * 7919 + 13) % (512 * 480)] = 3e7f;
        for (int n = 0; trouble.bCross && n < 480 * 6; ++n)
            img.Data()[(n % 480) * 512 + 130 + n / 480] += float(300 * trouble.dfScale);
        series.add(img);
    }
}

TEST(FindBeamRegion, LiesAroundTheBeamWhateverIsWrongWithIt)
{
    const Trouble aRow[] = {
        {"plain", 0, 0, 0, false, false, false, 1},
        {"core wrapped", 7, 0, 0, false, false, true, 1},
        {"behind a stop", 0, 16, 0, false, false, false, 1},
        {"bad detector", 0, 0, 0, true, true, true, 1},
        {"weak", 0, 0, 0, true, false, false, 0.01},
        {"wandering", 0, 0, 60, false, false, false, 1},
    };
    for (const Trouble& row : aRow) {
        FrameSeries series;
        addFrames(series, row, 9);
        RecordingReport report;
        QRect rc;
        ASSERT_TRUE(findBeamRegion(series.dataSet, report, rc)) << row.pWhat;
        EXPECT_EQ(rc.size(), QSize(256, 256)) << row.pWhat;
        const double dfTolerance = row.dfStopPixels > 0 ? 30 : 8;  // a stop's arm hides one side of the halo
        EXPECT_NEAR(rc.x() + 128, 230 + row.dfWander / 2, dfTolerance) << row.pWhat;
        EXPECT_NEAR(rc.y() + 128, 300, dfTolerance) << row.pWhat << " " << report.log().toStdString();
    }
}

TEST(FindBeamRegion, GrowsForAFarWanderAndShrinksIntoSmallFrames)
{
    const struct {
        int nW, nH;
        double dfWander;
        int nSide;
    } aRow[] = {{600, 560, 20, 256}, {600, 560, 170, 512}, {400, 300, 130, 300}, {201, 131, 5, 130}, {64, 64, 2, 64}};
    for (const auto& row : aRow) {
        FrameSeries series;
        for (int i = 0; i < 7; ++i) {
            const double dfX = 0.35 * row.nW + row.dfWander * i / 6;
            series.add(makeImage(row.nW, row.nH, [&](int x, int y) {
                return 20 + (x * 31 + y * 17) % 5 + 9000 / (1 + (std::pow(x - dfX, 2) + std::pow(y - 0.5 * row.nH, 2)) / 60);
            }));
        }
        RecordingReport report;
        QRect rc;
        ASSERT_TRUE(findBeamRegion(series.dataSet, report, rc));
        EXPECT_EQ(rc.width(), row.nSide) << row.nW;
        EXPECT_TRUE(QRect(0, 0, row.nW, row.nH).contains(rc));
        EXPECT_TRUE(rc.contains(int(0.35 * row.nW), row.nH / 2));
        EXPECT_TRUE(rc.contains(int(0.35 * row.nW + row.dfWander), row.nH / 2));
    }
    FrameSeries series;
    RecordingReport report;
    QRect rc(1, 2, 3, 4);
    series.dataSet.m_listFrameFile = QStringList{series.dir.filePath("none.mrc")};
    EXPECT_FALSE(findBeamRegion(series.dataSet, report, rc));
    EXPECT_EQ(rc, QRect(1, 2, 3, 4));
    EXPECT_TRUE(report.said("red "));
    series.add(makeImage(64, 64, [](int, int) { return 5; }));  // blank: any region will do
    EXPECT_TRUE(findBeamRegion(series.dataSet, report, rc));
    EXPECT_EQ(rc, QRect(0, 0, 64, 64));
}

TEST(EstimatePeakThreshold, IsEightDeviationsOfWhiteNoiseWhateverShinesOnIt)
{
    PeakHuntingParameters p;
    p.m_dfPeakRadius = 2;
    p.m_dfBackgroundRadius = 5;
    // variance of white noise behind a difference of two normalised Gaussians
    const double dfGain = std::sqrt((1.0 / 4 + 1.0 / 25 - 4.0 / (4 + 25)) / (4 * M_PI));
    for (double dfNoise : {0.02, 3.0, 2000.0}) {  // the last far beyond the clipping at -100
        std::mt19937 random(23);
        std::normal_distribution<double> noise(0, dfNoise);
        FrameSeries series;
        for (int i = 0; i < 3; ++i)
            series.add(makeImage(256, 256, [&](int x, int y) {
                return 1000 + noise(random) + 300 * dfNoise * gaussian((x + 10 * i) % 128 - 64, y % 128 - 64, 2);
            }));
        RecordingReport report;
        CPeakFilters filters;
        double dfThreshold = -1;
        ASSERT_TRUE(estimatePeakThreshold(series.dataSet, p, filters, report, dfThreshold));
        EXPECT_NEAR(dfThreshold / (8 * dfNoise * dfGain), 1.08, 0.1) << dfNoise;  // the spots add a little
    }
}

TEST(EstimatePeakThreshold, HoldsForSparseCountsAndForPictures)
{
    // counting detectors: nearly all pixels 0; pictures: steps of 64 on a dead background
    const struct {
        double dfRate, dfStep, dfSpot;
    } aRow[] = {{0.0003, 1, 4}, {0.02, 1, 6}, {0, 64, 5 * 64}, {0.3, 64, 12 * 64}};
    for (const auto& row : aRow) {
        std::mt19937 random(29);
        std::poisson_distribution<int> photons(row.dfRate > 0 ? row.dfRate : 1e-12);
        FrameSeries series;
        for (int i = 0; i < 4; ++i)
            series.add(makeImage(200, 200, [&](int x, int y) {
                const double dfSpot = row.dfSpot * gaussian((x + 5 * i) % 50 - 25, y % 50 - 25, 2.5);
                return row.dfStep * std::round(photons(random) + dfSpot / row.dfStep);
            }));
        RecordingReport report;
        CPeakFilters filters;
        PeakHuntingParameters p;
        p.m_dfPeakRadius = 3;
        p.m_dfBackgroundRadius = 6;
        ASSERT_TRUE(estimatePeakThreshold(series.dataSet, p, filters, report, p.m_dfPeakThreshold));
        EXPECT_GT(p.m_dfPeakThreshold, 0);
        ImageList vecImage;
        ASSERT_EQ(ReadMRC(series.dataSet.m_listFrameFile[0], vecImage), 1);
        FrameHuntWork work;
        const FramePeaks peaks = huntFrame(*vecImage[0], p, {}, filters, work);
        EXPECT_EQ(peaks.listX.size(), 16) << row.dfRate << " " << p.m_dfPeakThreshold;  // 4 x 4 spots, no noise
    }
    FrameSeries blank;
    blank.add(makeImage(50, 50, [](int, int) { return 7; }));
    RecordingReport report;
    CPeakFilters filters;
    double dfThreshold = -1;
    EXPECT_FALSE(estimatePeakThreshold(blank.dataSet, {}, filters, report, dfThreshold));
    EXPECT_EQ(dfThreshold, -1);
    EXPECT_TRUE(report.said("red "));
}

}  // namespace
