// Histogram, contrast limits and bytes for display.
#include "imaging/histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

const float fNan = std::numeric_limits<float>::quiet_NaN();
const float fInf = std::numeric_limits<float>::infinity();

std::vector<float> skewedSamples(int n)
{
    std::mt19937 engine(11);
    std::vector<float> vec;
    for (int i = 0; i < n; i++)
        vec.push_back(50.f - 300.f * std::log((engine() + 1.f) / 4294967296.f));
    return vec;
}

}  // namespace

TEST(CHistogram, LimitsAreThoseOfTheSortedSamplesToOneBin)
{
    const int n = 20011;  // a prime: no fraction falls on a whole number of samples
    auto vec = skewedSamples(n);
    CHistogram histogram;
    ASSERT_EQ(histogram.Fill(vec.data(), n, 500), 1);
    std::sort(vec.begin(), vec.end());
    EXPECT_EQ(histogram.Min(), vec.front());
    EXPECT_EQ(histogram.Max(), vec.back());
    EXPECT_GE(histogram.Bins().back(), 1) << "the largest sample is in the last bin";
    EXPECT_EQ(histogram.Total(), n);
    // The samples' bins are 1/499 of the range wide, the edges 1/500 apart.
    const double dfBin = (histogram.Max() - histogram.Min()) / 499;
    for (double dfP : {0.5, 0.1, 0.01, 0.001}) {
        const int nBeyond = int((1 - dfP) * n);
        EXPECT_NEAR(histogram.Upper(dfP), vec[std::size_t(nBeyond)], dfBin) << dfP;
        EXPECT_NEAR(histogram.Lower(dfP), vec[std::size_t(n - 1 - nBeyond)], dfBin) << dfP;
    }
}

TEST(CHistogram, CountsByTheRuleOfItsBins)
{
    CHistogram histogram;
    const float aSample[] = {0.f, 1.f, 1.99f, 2.f, 3.99f, 4.f, fNan, fInf, -fInf};
    ASSERT_EQ(histogram.Fill(aSample, 9, 3), 1);  // what is not finite stays out
    EXPECT_EQ(histogram.Bins(), (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(histogram.Total(), 6);
    EXPECT_DOUBLE_EQ(histogram.Upper(0.6), 4.0 / 3);   // 3 of 6 exceed 0.4 in bin 0
    EXPECT_DOUBLE_EQ(histogram.Upper(0.5), 8.0 / 3);   // 3 of 6 do not exceed 0.5
    EXPECT_DOUBLE_EQ(histogram.Lower(0.6), 8.0 / 3);   // from the top: 1, then 3 of 6
    EXPECT_DOUBLE_EQ(histogram.Upper(0.0), 16.0 / 3);  // never exceeds 1: one bin beyond
    EXPECT_DOUBLE_EQ(histogram.Lower(0.0), 0.0);
    EXPECT_EQ(histogram.Fill(aSample, 0, 3) + histogram.Fill(aSample, 9, 0) + histogram.Fill(nullptr, 9, 3) +
                  histogram.Fill(aSample + 6, 3, 3),
              0);
    EXPECT_EQ(histogram.Total(), 6) << "a refused fill leaves the counts";
    const std::vector<float> vecEqual(100, 42.f);
    histogram.Fill(vecEqual.data(), 100, 10);
    EXPECT_EQ(histogram.Bins()[0], 100);
    EXPECT_EQ(histogram.Upper(0.001), 42.0);
}

TEST(AutoContrast, LowersTheLowLimitOfTheHistogram)
{
    const auto vec = skewedSamples(5000);
    double dfLow = 0.0, dfHigh = 0.0, dfAutoLow = 0.0, dfAutoHigh = 0.0;
    ASSERT_EQ(GetContrastLimits(vec.data(), 5000, 0.0001f, 0.001f, 1000, &dfLow, &dfHigh), 1);
    ASSERT_EQ(autoContrastLimits(vec.data(), 5000, &dfAutoLow, &dfAutoHigh), 1);
    EXPECT_EQ(dfAutoHigh, dfHigh);
    EXPECT_DOUBLE_EQ(dfAutoLow, 1.15 * dfLow - 0.15 * dfHigh);
    EXPECT_EQ(autoContrastLimits(&fNan, 1, &dfAutoLow, &dfAutoHigh), 0);
    EXPECT_EQ(dfAutoHigh, dfHigh);
}

TEST(FloatToByte, MapsTruncatesAndCutsOff)
{
    const struct {
        float fPixel, fLow, fHigh, fOutMin, fOutMax;
        int nExpected;
    } aRow[] = {{50, 0, 100, 0, 255, 127},
                {99.9f, 0, 100, 0, 255, 254},
                {100, 0, 100, 0, 250, 250},
                {101, 0, 100, 0, 255, 255},
                {-1, 0, 100, 0, 255, 0},
                {50, 0, 100, 10.9f, 200.9f, 105},
                {-50, 0, 100, 10.9f, 200, 10},
                {500, 0, 100, 10, 200.9f, 200},
                {50, 0, 100, -100, 500, 127},
                {50, 100, 0, 0, 255, 127},
                {0, 100, 0, 0, 250, 250},
                {100, 0, 100, 0, 255, 254},  // the scale 2.55 is a float a little below
                {7, 7, 7, 20, 255, 20},
                {1e30f, 7, 7, 20, 255, 20},
                {1e38f, 0, 1e-30f, 0, 255, 255},
                {-1e38f, 0, 1e-30f, 0, 255, 0},
                {fNan, 0, 100, 30, 255, 30},
                {fInf, 0, 100, 0, 255, 255},
                {-fInf, 0, 100, 5, 255, 5},
                {50, 0, 100, 300, 255, 255},
                {50, 0, 100, 0, -20, 0},
                {50, fNan, 100, 3, 255, 3}};
    for (const auto& row : aRow) {
        unsigned char byte = 77;
        ASSERT_EQ(FloatToByte(&row.fPixel, &byte, 1, row.fLow, row.fHigh, row.fOutMin, row.fOutMax), 1);
        EXPECT_EQ(int(byte), row.nExpected) << row.fPixel << " in " << row.fLow << " .. " << row.fHigh
                                            << " to " << row.fOutMin << " .. " << row.fOutMax;
    }
}

TEST(FloatToByteScaled, UsesTheLimitsOfTheHistogram)
{
    const auto vec = skewedSamples(3000);
    std::vector<unsigned char> vecScaled(3000), vecExplicit(3000);
    double dfLow = 0.0, dfHigh = 0.0;
    GetContrastLimits(vec.data(), 3000, 0.05f, 0.01f, 1000, &dfLow, &dfHigh);
    ASSERT_EQ(FloatToByteScaled(vec.data(), vecScaled.data(), 3000, 0.05f, 0.01f, 1000, 0.f, 255.f), 1);
    FloatToByte(vec.data(), vecExplicit.data(), 3000, float(dfLow), float(dfHigh), 0.f, 255.f);
    EXPECT_EQ(vecScaled, vecExplicit);
    EXPECT_NEAR(std::count(vecScaled.begin(), vecScaled.end(), 255), 30, 8);

    for (float f : {5.f, fNan}) {
        const std::vector<float> vecEqual(10, f);
        EXPECT_EQ(FloatToByteScaled(vecEqual.data(), vecScaled.data(), 10, 0.001f, 0.001f, 1000, 12.f, 255.f),
                  f == 5.f);
        EXPECT_EQ(std::count(vecScaled.begin(), vecScaled.begin() + 10, 12), 10);
    }
}
