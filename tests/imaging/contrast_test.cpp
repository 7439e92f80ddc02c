// Histogram, contrast limits and bytes for display.
#include "imaging/contrast.h"
#include "imaging/histogram.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tessera {

TEST(CHistogram, CountsByTheRuleOfItsBins)
{
    CHistogram histogram;
    const float aSample[] = {0.f, 1.f, 1.99f, 2.f, 3.99f, 4.f, NAN, INFINITY};
    ASSERT_EQ(histogram.Fill(aSample, 8, 3), 1);  // what is not finite stays out
    EXPECT_EQ(histogram.Bins(), (std::vector<int>{3, 2, 1}));
    EXPECT_DOUBLE_EQ(histogram.Upper(0.6), 4.0 / 3);   // 3 of 6 exceed 0.4 in bin 0
    EXPECT_DOUBLE_EQ(histogram.Upper(0.5), 8.0 / 3);   // 3 of 6 do not exceed 0.5
    EXPECT_DOUBLE_EQ(histogram.Lower(0.6), 8.0 / 3);   // from the top: 1, then 3 of 6
    EXPECT_DOUBLE_EQ(histogram.Upper(0.0), 16.0 / 3);  // never exceeds 1: one bin beyond
    EXPECT_DOUBLE_EQ(histogram.Lower(0.0), 0.0);
}

// Of 100000 samples the dark end loses at most 10 and the bright end at most 100: the lone 5 and 90.
TEST(AutoContrast, CutsItsFractionsOffASparseTailAndLowersTheLowLimit)
{
    std::vector<float> vec;
    for (const auto& group :
         {std::pair<int, int>{5, -1000}, {50, -500}, {99755, 0}, {100, 500}, {90, 1000}}) {
        vec.insert(vec.end(), std::size_t(group.first), float(group.second));
    }
    double dfLow = 0.0, dfHigh = 0.0;
    ASSERT_EQ(autoContrastLimits(vec.data(), 100000, &dfLow, &dfHigh), 1);
    EXPECT_NEAR(dfHigh, 500.0, 2.0);  // a bin
    EXPECT_NEAR(dfLow, -500.0 - 0.15 * 1000.0, 3.0);
}

TEST(FloatToByte, MapsTruncatesAndCutsOff)
{
    // pixel, low, high, minimum and maximum of the output, byte. 255/7 and 2.55 as floats are a little too
    // small.
    const float aRow[][6] = {
        {50, 0, 100, 0, 255, 127},      {99.9f, 0, 100, 0, 255, 254},     {7, 0, 7, 0, 255, 254},
        {100, 0, 100, 0, 255, 254},     {100, 0, 100, 0, 250, 250},       {101, 0, 100, 0, 255, 255},
        {-1, 0, 100, 0, 255, 0},        {50, 0, 100, 10.9f, 200.9f, 105}, {-50, 0, 100, 10.9f, 200, 10},
        {500, 0, 100, 10, 200.9f, 200}, {50, 0, 100, -100, 500, 127},     {50, 100, 0, 0, 255, 127},
        {7, 7, 7, 20, 255, 20},         {1e38f, 0, 1e-30f, 0, 255, 255},  {-1e38f, 0, 1e-30f, 0, 255, 0},
        {NAN, 0, 100, 30, 255, 30}};
    for (const auto& [fPixel, fLow, fHigh, fOutMin, fOutMax, fExpected] : aRow) {
        unsigned char byte = 77;
        ASSERT_EQ(FloatToByte(&fPixel, &byte, 1, fLow, fHigh, fOutMin, fOutMax), 1);
        EXPECT_EQ(byte, fExpected) << fPixel << " in " << fLow << " .. " << fHigh << " to " << fOutMin
                                   << " .. " << fOutMax;
    }
}

}  // namespace tessera
