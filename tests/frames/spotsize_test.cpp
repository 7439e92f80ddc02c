#include "frames/median.h"
#include "frames/serieslook.h"
#include "frames/suggestpeaksearch.h"
#include "tests/frames/frameseries.h"

#include <algorithm>
#include <limits>

namespace tessera {

namespace {

/// Spots of a sigma on a square grid with a jitter, in normal noise of 3 on a background of 20.
CImgObj<float> spottedFrame(double dfSigma, double dfStep, double dfHeight, unsigned nSeed)
{
    const int nSide = 320;
    std::mt19937 random(nSeed);
    std::normal_distribution<double> noise(0, 3);
    std::uniform_real_distribution<double> jitter(-0.5, 0.5);
    CImgObj<float> img = makeImage(nSide, nSide, [&](int, int) { return 20 + noise(random); });
    // The grid moves from frame to frame, or its spots would stand still.
    const double dfFirst = dfStep * (0.4 + 0.13 * (nSeed % 5));
    for (double dfY = dfFirst; dfY < nSide; dfY += dfStep) {
        for (double dfX = dfFirst; dfX < nSide; dfX += dfStep) {
            const double dfAtX = dfX + jitter(random), dfAtY = dfY + jitter(random);
            const int nReach = int(5 * dfSigma) + 1;
            for (int y = std::max(0, int(dfAtY) - nReach); y < std::min(nSide, int(dfAtY) + nReach); ++y) {
                for (int x = std::max(0, int(dfAtX) - nReach); x < std::min(nSide, int(dfAtX) + nReach);
                     ++x) {
                    img.Data()[y * nSide + x] += float(dfHeight * gaussian(x - dfAtX, y - dfAtY, dfSigma));
                }
            }
        }
    }
    return img;
}

struct Made {
    double dfSigma, dfStep, dfHeight;
};

TEST(SpotSize, IsThatOfTheSpotsThatWereMade)
{
    // The last two: weak against the noise of a pixel; spots close together.
    for (const Made& made : {Made{1, 12, 300}, Made{1.5, 14, 300}, Made{3, 32, 300}, Made{6, 60, 300},
                             Made{6, 60, 25}, Made{1.5, 10, 300}}) {
        SCOPED_TRACE(testing::Message() << made.dfSigma << ' ' << made.dfStep << ' ' << made.dfHeight);
        std::vector<FrameSpots> vecFrame;
        for (unsigned n = 0; n < 4; ++n) {
            vecFrame.push_back(spotsOfFrame(spottedFrame(made.dfSigma, made.dfStep, made.dfHeight, n)));
        }
        const auto size = spotSizeOf(vecFrame);
        ASSERT_TRUE(size);
        EXPECT_NEAR(size->dfSigma, made.dfSigma, 0.1 * made.dfSigma);
        if (size->dfClosest > 0) {
            EXPECT_NEAR(size->dfClosest, made.dfStep, 1 + 0.05 * made.dfStep);
        }
        EXPECT_TRUE(size->dfClosest > 0 || made.dfStep > 50);
    }
}

TEST(SpotSize, IsNotToldWhereThereAreNoSpots)
{
    std::mt19937 random(3);
    std::normal_distribution<double> noise(0, 3);
    const auto pixels = [](int nWidth, int nHeight, const PixelFunction& fn) {
        return spotSizeOf(std::vector<FrameSpots>(3, spotsOfFrame(makeImage(nWidth, nHeight, fn))));
    };
    const double dfNaN = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(pixels(200, 200, [&](int, int) { return 20 + noise(random); }));
    EXPECT_FALSE(pixels(200, 200, [](int, int) { return 0; }));
    EXPECT_FALSE(pixels(200, 200, [](int, int) { return 65535; }));
    EXPECT_FALSE(pixels(200, 200, [&](int, int) { return dfNaN; }));
    EXPECT_FALSE(pixels(2, 2, [](int x, int y) { return x + y; }));
    EXPECT_FALSE(pixels(2, 300, [](int, int y) { return y % 7; }));
    // Hot pixels, saturated discs and streaks are no spots.
    EXPECT_FALSE(pixels(
        200, 200, [&](int x, int y) { return noise(random) + (x % 20 == 10 && y % 20 == 10 ? 500 : 0); }));
    EXPECT_FALSE(pixels(200, 200, [&](int x, int y) {
        return std::min(250.0, noise(random) + 3000 * gaussian(x % 40 - 20, y % 40 - 20, 3));
    }));
    EXPECT_FALSE(pixels(
        200, 200, [&](int x, int y) { return noise(random) + (y % 40 == 20 && x % 50 < 40 ? 300 : 0); }));
    EXPECT_FALSE(spotSizeOf({}));
    EXPECT_TRUE(suggestPeakSearch(std::nullopt).isEmpty());
}

TEST(SpotSize, SomeBadPixelsHideNoSpots)
{
    CImgObj<float> img = spottedFrame(1.5, 14, 300, 1);
    for (int i = 0; i < 320 * 320; i += 997) {
        img.Data()[i] = std::numeric_limits<float>::quiet_NaN();
    }
    const auto size = spotSizeOf({spotsOfFrame(img)});
    ASSERT_TRUE(size);
    EXPECT_NEAR(size->dfSigma, 1.5, 0.1);
}

TEST(SeriesLook, IsTheSameForEveryNumberOfJobsAndAsEachAlone)
{
    FrameSeries series;
    for (unsigned n = 0; n < 8; ++n) {
        CImgObj<float> img = spottedFrame(1.5, 14, 300, n);
        for (int y = 0; y < img.Height(); ++y) {
            img.Data()[y * img.Width() + 77] = 20;
        }
        img.Data()[40 * img.Width() + 200] = 30000;
        series.add(img);
    }
    series.removeFrame(0);  // it is looked at, and not missed
    const auto one = lookAtSeries(series.dataSet, {}, series.report, 1);
    const auto four = lookAtSeries(series.dataSet, {}, series.report, 4);
    const std::optional<SpotSize> size = measureSpotSize(series.dataSet, series.report).size;
    const auto defects = findFrameDefects(series.dataSet, series.report);
    ASSERT_TRUE(one);
    ASSERT_TRUE(four);
    ASSERT_TRUE(defects);
    ASSERT_TRUE(one->size);
    ASSERT_TRUE(four->size);
    ASSERT_TRUE(size);
    EXPECT_EQ(one->size->nFrames, 5);
    for (const SpotSize& other : {*four->size, *size}) {
        EXPECT_EQ(one->size->dfSigma, other.dfSigma);
        EXPECT_EQ(one->size->dfClosest, other.dfClosest);
        EXPECT_EQ(one->size->nSpots, other.nSpots);
    }
    EXPECT_EQ(one->defects.listHotPixel, QList<QPoint>({{200, 40}}));
    EXPECT_EQ(tellDefects(one->defects).size(), 2);
    EXPECT_EQ(tellDefects(one->defects), tellDefects(four->defects));
    EXPECT_EQ(tellDefects(one->defects), tellDefects(*defects));
}

TEST(SeriesLook, TakesNoMoreThanAFewOfTheFrames)
{
    for (const auto& [nFrames, nLookedAt] :
         {std::pair(0, 0), {1, 1}, {5, 5}, {40, 6}, {49, 7}, {91, 13}, {400, 13}}) {
        EXPECT_EQ(framesToLookAt(nFrames), nLookedAt) << nFrames;
    }
}

TEST(Median, IsThatOfTheSortedNumbers)
{
    std::mt19937 random(5);
    for (int nRange : {1, 3, 50, 1000000}) {  // from all alike to next to all different
        for (size_t n : {size_t(1), size_t(2), size_t(17), size_t(128), size_t(1001)}) {
            std::vector<float> vec(n);
            for (float& f : vec) {
                f = float(int(random() % unsigned(nRange)));
            }
            std::vector<float> vecSorted = vec;
            std::sort(vecSorted.begin(), vecSorted.end());
            for (const std::vector<float>& vecOrder :
                 {vec, vecSorted, std::vector<float>(vecSorted.rbegin(), vecSorted.rend())}) {
                std::vector<float> vecParted = vecOrder;
                const size_t nAt = n / 3;
                partAt(vecParted.data(), vecParted.data() + nAt, vecParted.data() + n);
                EXPECT_EQ(vecParted[nAt], vecSorted[nAt]);
                EXPECT_LE(*std::max_element(vecParted.begin(), vecParted.begin() + std::ptrdiff_t(nAt + 1)),
                          vecSorted[nAt]);
                std::sort(vecParted.begin(), vecParted.end());
                EXPECT_EQ(vecParted, vecSorted);
                vecParted = vecOrder;
                EXPECT_EQ(medianOf(vecParted), vecSorted[n / 2]);
            }
        }
    }
}

double valueOf(const Suggestion& suggestion, ParameterMember member)
{
    for (const SuggestedValue& value : suggestion) {
        if (value.member == member) {
            EXPECT_FALSE(value.strWhy.isEmpty());
            return value.dfValue;
        }
    }
    return -1;
}

TEST(SuggestPeakSearch, KeepsEverythingWithinHalfTheWayToTheNextSpot)
{
    using Hunt = PeakHuntingParameters;
    const Suggestion wide = suggestPeakSearch(SpotSize{1.5, 40, 100, 10});
    EXPECT_EQ(valueOf(wide, &Hunt::m_dfPeakRadius), 1.5);
    EXPECT_NEAR(valueOf(wide, &Hunt::m_dfBackgroundRadius), 4.05, 0.011);
    EXPECT_EQ(valueOf(wide, &Hunt::m_dfIntegrationRadius), 5);
    EXPECT_EQ(valueOf(wide, &Hunt::m_dfIntegrationBackground), 3);
    const Suggestion dense = suggestPeakSearch(SpotSize{1.5, 7, 100, 10});
    EXPECT_LT(valueOf(dense, &Hunt::m_dfBackgroundRadius), 3.5);
    EXPECT_EQ(valueOf(dense, &Hunt::m_dfIntegrationRadius), 3);
    EXPECT_EQ(valueOf(dense, &Hunt::m_dfIntegrationBackground), 1);
    // A narrow Gaussian that was given stays the narrower of the two.
    EXPECT_GE(valueOf(suggestPeakSearch(SpotSize{1.5, 7, 100, 10}, 5.0), &Hunt::m_dfBackgroundRadius), 10);
}

}  // namespace

}  // namespace tessera
