#include "frames/autoregion.h"
#include "frames/autothreshold.h"
#include "frames/framehunt.h"
#include "frames/peakhunting.h"
#include "records/pi.h"
#include "tests/frames/frameseries.h"

namespace tessera {

namespace {

/// What may be wrong with the beam of a series and with its detector.
struct Trouble {
    const char* pWhat;
    double dfCorePixels;  ///< radius of a core that reads as a low value
    double dfStopPixels;  ///< radius of a beam stop whose arm goes up
    double dfWander;      ///< pixels to the right over the series
    bool bBadDetector;    ///< hot pixels and lines, dark corners
    double dfScale;       ///< of all intensities
    int nSide;            ///< of the region
};

const int g_nFrames = 7;

/// Beam with a halo at (230, 300) of 640 × 560, and a reflection elsewhere on each frame.
CImgObj<float> frameOf(const Trouble& trouble, int nFrame, std::mt19937& random)
{
    std::normal_distribution<double> noise(0, 3);
    const double dfBeamX = 230 + trouble.dfWander * nFrame / (g_nFrames - 1);
    CImgObj<float> img = makeImage(640, 560, [&](int x, int y) {
        const double dfR = std::hypot(x - dfBeamX, y - 300);
        if (trouble.bBadDetector && std::hypot(x - 320, y - 280) > 290) {
            return 0.0;
        }
        double df = 10 + 1500 / (1 + std::pow(dfR / 14, 2)) + 60000 * gaussian(dfR, 0, 3);
        if (dfR < trouble.dfCorePixels) {
            df = -3000;
        }
        if (dfR < trouble.dfStopPixels ||
            (trouble.dfStopPixels > 0 && std::abs(x - dfBeamX) < 6 && y < 300)) {
            df = 0;
        }
        return trouble.dfScale *
               (df + noise(random) + 20000 * gaussian(x - 60 * nFrame - 90, y - 70 * nFrame - 60, 2));
    });
    for (int n = 0; trouble.bBadDetector && n < 3000; ++n) {
        img.Data()[n < 60 ? n * 5923 + 13 : (n % 560) * 640 + 130 + n / 560] = n < 60 ? 3e7f : 400.f;
    }
    return img;
}

double estimate(const CImgObj<float>& img, const PeakHuntingParameters& p)
{
    FrameSeries series;
    series.add(img);
    const auto found = estimatePeakThreshold(series.dataSet, p, series.filters, series.report);
    EXPECT_TRUE(found);
    return found ? found->dfThreshold : -1;
}

TEST(FindBeamRegion, LiesAroundTheBeamWhateverIsWrongWithIt)
{
    std::mt19937 random(17);
    for (const Trouble& row : {Trouble{"core wrapped", 7, 0, 0, false, 1, 256},
                               {"behind a stop", 0, 16, 0, false, 1, 256},
                               {"weak", 0, 0, 0, false, 0.01, 256},
                               {"wandering far", 0, 0, 150, true, 1, 512}}) {
        FrameSeries series;
        for (int i = 0; i < g_nFrames; ++i) {
            series.add(frameOf(row, i, random));
        }
        const auto region = findBeamRegion(series.dataSet, series.report);
        ASSERT_TRUE(region) << row.pWhat;
        const QRect rc = *region;
        EXPECT_EQ(rc.size(), QSize(row.nSide, row.nSide)) << row.pWhat;
        const double dfTolerance = row.dfStopPixels > 0 ? 30 : 8;  // a stop's arm hides one side of the halo
        EXPECT_NEAR(rc.x() + row.nSide / 2, 230 + row.dfWander / 2, dfTolerance + (row.nSide - 256) / 4)
            << row.pWhat;
        EXPECT_NEAR(rc.y() + row.nSide / 2, 300, dfTolerance) << row.pWhat;

        EXPECT_EQ(findBeamRegion(series.dataSet, series.report, 3), region);
        CPeakFilters filters;
        const auto sideBySide = estimatePeakThreshold(series.dataSet, radii(2, 5), filters, series.report, 3);
        const auto alone = estimatePeakThreshold(series.dataSet, radii(2, 5), filters, series.report, 1);
        ASSERT_TRUE(sideBySide);
        ASSERT_TRUE(alone);
        EXPECT_EQ(sideBySide->dfThreshold, alone->dfThreshold);
    }
}

TEST(FindBeamRegion, IsNoneOnBlankFramesAndTheOnlySizeOnSmallOnes)
{
    FrameSeries series;
    EXPECT_FALSE(findBeamRegion(series.dataSet, series.report));
    series.add(makeImage(65, 90, [](int, int) { return 5; }));
    EXPECT_FALSE(findBeamRegion(series.dataSet, series.report)) << "blank";
    series.add(makeImage(65, 90, [](int x, int y) { return 5 + 900 * gaussian(x - 30, y - 50, 3); }));
    const auto region = findBeamRegion(series.dataSet, series.report);
    ASSERT_TRUE(region);
    EXPECT_EQ(region->size(), QSize(64, 64)) << "the greatest even side that fits";
}

TEST(FindBeamRegion, WhatStandsInTheWayIsNamed)
{
    FrameSeries narrow, unread;
    narrow.add(makeImage(20000, 40, [](int, int) { return 5; }));
    EXPECT_FALSE(findBeamRegion(narrow.dataSet, narrow.report));
    EXPECT_TRUE(
        narrow.report.said(QString("on frames of %L1×40 pixels it needs sides of at least 79.").arg(20000)))
        << narrow.report.log().toStdString();
    for (int i = 0; i < 7; ++i) {
        unread.add(makeImage(40, 40, [](int, int) { return 5; }));
        const QString strFile = unread.dataSet.m_listFrameFile.last();
        writeBytes(strFile, readBytes(strFile).replace(12, 1, "\4"));
    }
    EXPECT_FALSE(findBeamRegion(unread.dataSet, unread.report));
    EXPECT_FALSE(estimatePeakThreshold(unread.dataSet, {}, unread.filters, unread.report));
    EXPECT_EQ(unread.report.log().count(".mrc: MODE 4 (complex) is not read"), 2 * 5);
    EXPECT_EQ(unread.report.log().count("2 more of the frames looked at cannot be read."), 2);
    EXPECT_EQ(unread.report.log().count("ed: no frame could be read."), 1);
    EXPECT_EQ(unread.report.log().count("No peak threshold was found: no frame could be read."), 1);
}

// Frames that were scaled to 0 to 1 give the peaks of the same frames in counts, with intensities that the
// tenths of a peak list can hold, and the log tells the threshold that is used.
TEST(EstimatePeakThreshold, SmallValuesAreScaled)
{
    QList<QList<Peak3D>> alistPeak[2];
    for (double dfGreatest : {1.0, 4000.0}) {
        std::mt19937 random(31);
        std::normal_distribution<double> noise(0.02, 0.002);
        FrameSeries series;
        for (int i = 0; i < 3; ++i) {
            series.add(makeImage(128, 128, [&](int x, int y) {
                return dfGreatest * (noise(random) + 0.9 * gaussian(x % 64 - 30 - i, y % 64 - 32, 2));
            }));
        }
        PeakHuntingParameters p = radii(2, 5);
        const auto found = estimatePeakThreshold(series.dataSet, p, series.filters, series.report, 2,
                                                 SmallValues::Scaled);
        ASSERT_TRUE(found);
        p.m_dfPeakThreshold = found->dfThreshold;
        p.m_dfFrameScale = found->dfScale;
        EXPECT_EQ(p.m_dfFrameScale, dfGreatest == 1 ? 1e5 : 1);
        EXPECT_TRUE(series.report.said(QString("Peak threshold %L1 from").arg(p.m_dfPeakThreshold)));
        EXPECT_GT(p.m_dfPeakThreshold, 1);
        ASSERT_EQ(runPeakHunting(series.dataSet, p, series.filters, series.report).end, RunEnd::Finished);
        alistPeak[dfGreatest == 1] = series.dataSet.m_listPeakFrame;
    }
    ASSERT_EQ(alistPeak[0].size(), 3);
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(alistPeak[1][i].size(), 4);
        ASSERT_EQ(alistPeak[0][i].size(), 4);
        for (int n = 0; n < 4; ++n) {
            EXPECT_EQ(alistPeak[1][i][n].dfX2D, alistPeak[0][i][n].dfX2D);
            EXPECT_NEAR(alistPeak[1][i][n].dfIPoint / alistPeak[0][i][n].dfIPoint, 25, 0.01);
        }
    }
}

TEST(EstimatePeakThreshold, IsEightDeviationsOfWhiteNoiseWhateverShinesOnIt)
{
    // variance of white noise behind a difference of two normalised Gaussians
    const double dfGain = std::sqrt((1.0 / 4 + 1.0 / 25 - 4.0 / (4 + 25)) / (4 * g_dfPi));
    for (double dfNoise : {0.02, 2000.0}) {  // the second far beyond the clipping at -100
        std::mt19937 random(23);
        std::normal_distribution<double> noise(0, dfNoise);
        const CImgObj<float> img = makeImage(256, 256, [&](int x, int y) {
            return 1000 + noise(random) + 300 * dfNoise * gaussian(x % 128 - 64, y % 128 - 64, 2);
        });
        EXPECT_NEAR(estimate(img, radii(2, 5)) / (8 * dfNoise * dfGain), 1.08,
                    0.1);  // the spots add a little
    }
}

TEST(EstimatePeakThreshold, HoldsForSparseCountsAndForPictures)
{
    // counting detectors: nearly all pixels 0; pictures: steps of 64 on a dead background
    const struct {
        double dfRate;
        int nStep, nSpot;
    } aRow[] = {{0.0003, 1, 4}, {0.02, 1, 6}, {0.0, 64, 5}, {0.3, 64, 12}};
    for (const auto& row : aRow) {
        std::mt19937 random(29);
        std::poisson_distribution<int> photons(std::max(row.dfRate, 1e-12));
        const CImgObj<float> img = makeImage(200, 200, [&](int x, int y) {
            return row.nStep *
                   std::round(photons(random) + row.nSpot * gaussian(x % 50 - 25, y % 50 - 25, 2.5));
        });
        PeakHuntingParameters p = radii(3, 6);
        p.m_dfPeakThreshold = estimate(img, p);
        CPeakFilters filters;
        FrameHuntWork work;
        EXPECT_EQ(huntFrame(img, p, {}, filters, work).listX.size(), 16)
            << row.dfRate;  // 4 x 4 spots, no noise
    }
}

}  // namespace

}  // namespace tessera
