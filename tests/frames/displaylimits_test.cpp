// The contrast that a frame is first shown with, and all frames in one picture.
#include "frames/displaylimits.h"
#include "frames/seriespicture.h"
#include "tests/frames/frameseries.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace tessera {

namespace {

const float g_fNaN = std::numeric_limits<float>::quiet_NaN();

}  // namespace

// 10 000 pixels that are the numbers 0 to 9999 in a scattered order: each percentile is its own rank.
TEST(DisplayLimits, AreTheRanksOfTheUsablePixels)
{
    CImgObj<float> img = makeImage(100, 102, [](int x, int y) { return (x + 100 * y) * 3947 % 10000; });
    for (int i = 0; i < 200; ++i) {
        img.Data()[10000 + i] = i % 3 == 0 ? g_fNaN : i % 3 == 1 ? 2e30f : -INFINITY;
    }
    const auto limits = displayLimits(img, {});
    ASSERT_TRUE(limits);
    EXPECT_EQ(limits->dfLow, 99);     // 0.01 · 9999 = 99.99
    EXPECT_EQ(limits->dfHigh, 9969);  // 0.997 · 9999 = 9969.003
    EXPECT_FALSE(displayLimits(makeImage(50, 50, [](int, int) { return 7; }), {}));
    EXPECT_FALSE(displayLimits(makeImage(50, 50, [](int, int) { return g_fNaN; }), {}));
    EXPECT_FALSE(brightestDisc(makeImage(50, 50, [](int, int) { return g_fNaN; })));
}

TEST(DisplayLimits, LeaveTheBeamOutAndNotAHotPixel)
{
    CImgObj<float> img = makeImage(256, 192, [](int x, int y) {
        return 20 + (x * 31 + y * 17) % 10 + 60000 * gaussian(x - 90.3, y - 101.8, 3);
    });
    img.Data()[20 * 256 + 30] = 1e6f;
    const auto disc = brightestDisc(img);
    ASSERT_TRUE(disc);
    EXPECT_LT(std::hypot(disc->ptCentre.x() - 90.3, disc->ptCentre.y() - 101.8), 3);
    EXPECT_EQ(disc->dfRadius, 12);
    const auto limits = displayLimits(img, disc), withBeam = displayLimits(img, {});
    ASSERT_TRUE(limits);
    ASSERT_TRUE(withBeam);
    EXPECT_EQ(limits->dfLow, 20);
    EXPECT_LE(limits->dfHigh, 50);  // what is left of the beam's flanks at four times its width
    EXPECT_GT(withBeam->dfHigh, 1000);
}

namespace {

// Three frames of 6 × 4 pixels by hand; the second has no measurement at (2, 1), nobody has one at (5, 3).
struct SmallSeries : FrameSeries {
    SmallSeries()
    {
        for (int n = 0; n < 3; ++n) {
            add(makeImage(6, 4, [&](int x, int y) {
                return (x == 5 && y == 3) || (n == 1 && x == 2 && y == 1) ? g_fNaN : value(n, x, y);
            }));
        }
    }
    static double value(int n, int x, int y) { return (n == x % 3 ? 100 : -5) + 10 * y + n; }
    SeriesPicture picture(SeriesPictureKind kind, int nJobs = 1)
    {
        auto result = makeSeriesPicture(dataSet, kind, report, nJobs);
        EXPECT_TRUE(result.finished());
        return result.finished() ? std::move(*result.made) : SeriesPicture();
    }
    static float at(const SeriesPicture& picture, int x, int y)
    {
        return picture.image.Data()[x + picture.image.Width() * y];
    }
};

}  // namespace

TEST(SeriesPicture, MaximumSumAndMeanLeaveOutWhatIsNoMeasurement)
{
    SmallSeries series;
    for (const int nJobs : {1, 3}) {
        const SeriesPicture maximum = series.picture(SeriesPictureKind::Maximum, nJobs);
        const SeriesPicture sum = series.picture(SeriesPictureKind::Sum, nJobs);
        const SeriesPicture mean = series.picture(SeriesPictureKind::Mean, nJobs);
        EXPECT_EQ(maximum.nFrames, 3);
        EXPECT_FALSE(maximum.bDriftTakenOut);
        EXPECT_EQ(series.at(maximum, 4, 2), 100 + 20 + 1);
        EXPECT_EQ(series.at(sum, 4, 2), 90 + 60 + 3);
        EXPECT_EQ(series.at(mean, 4, 2), 51);
        EXPECT_EQ(series.at(maximum, 2, 1), 112);
        EXPECT_EQ(series.at(sum, 2, 1), float((112 + 5) * 3 / 2.0)) << "two of three";
        EXPECT_EQ(series.at(mean, 2, 1), 58.5f);
        for (const SeriesPicture* pPicture : {&maximum, &sum, &mean}) {
            EXPECT_TRUE(std::isnan(series.at(*pPicture, 5, 3)));
        }
    }
    // Negative values alone have a maximum of their own.
    FrameSeries dark;
    dark.add(makeImage(2, 2, [](int, int) { return -7; }));
    const auto made = makeSeriesPicture(dark.dataSet, SeriesPictureKind::Maximum, dark.report);
    ASSERT_TRUE(made.finished());
    EXPECT_EQ(made.made->image.Data()[0], -7);
}

TEST(SeriesPicture, TakesTheDriftOutByWholePixels)
{
    SmallSeries series;
    series.dataSet.m_listShift = {{0, 0}, {1.9, 0}, {-2.2, 1}};
    const SeriesPicture sum = series.picture(SeriesPictureKind::Sum);
    EXPECT_TRUE(sum.bDriftTakenOut);
    const auto value = &SmallSeries::value;
    EXPECT_EQ(series.at(sum, 3, 2), float(value(0, 3, 2) + value(1, 4, 2) + value(2, 1, 3)));
    // (0, 0) is outside the third frame, (5, 0) outside the second.
    EXPECT_EQ(series.at(sum, 0, 0), float((value(0, 0, 0) + value(1, 1, 0)) * 3 / 2));
    EXPECT_EQ(series.at(sum, 5, 0), float((value(0, 5, 0) + value(2, 3, 1)) * 3 / 2));
}

TEST(SeriesPicture, GoesOnWithoutAFrameAndLeavesItsTargetAlone)
{
    SmallSeries series;
    series.add(makeImage(5, 4, [](int, int) { return 1; }));
    series.removeFrame(0);
    const SeriesPicture picture = series.picture(SeriesPictureKind::Maximum);
    EXPECT_EQ(picture.nFrames, 2);
    EXPECT_EQ(picture.nLeftOut, 2);
    EXPECT_EQ(series.at(picture, 1, 0), 101);
    EXPECT_GE(series.report.marked().filter("red ").size(), 2);

    series.report.m_nStopAfter = 1;
    EXPECT_EQ(makeSeriesPicture(series.dataSet, SeriesPictureKind::Sum, series.report).outcome.end,
              RunEnd::Stopped);
    FrameSeries empty;
    EXPECT_EQ(makeSeriesPicture(empty.dataSet, SeriesPictureKind::Sum, empty.report).outcome.end,
              RunEnd::Refused);
    for (int n = 0; n < 4; ++n) {
        series.removeFrame(n);
    }
    series.report.m_nStopAfter = -1;
    EXPECT_EQ(makeSeriesPicture(series.dataSet, SeriesPictureKind::Sum, series.report).outcome.end,
              RunEnd::Failed);
}

}  // namespace tessera
