// Bytes by the logarithm, and the histogram that is looked at.
#include "imaging/logcontrast.h"
#include "imaging/viewhistogram.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>
#include <vector>

namespace tessera {

// Against the formula in double precision: the same byte everywhere but on the last bits of a limit, where
// the formula itself is in doubt.
TEST(FloatToByteLog, IsTheFormulaForEveryRange)
{
    std::mt19937 rng(7);
    for (const auto& [fLow, fHigh] :
         {std::pair<float, float>{0, 1}, {-30, 70}, {12.5f, 60000}, {0, 1e6f}, {1000, 1000.5f}}) {
        std::vector<float> vec;
        const double dfSpan = std::log1p(double(fHigh) - double(fLow));
        std::uniform_real_distribution<double> share(-0.1, 1.1);
        for (int i = 0; i < 20000; ++i) {
            vec.push_back(float(double(fLow) + std::expm1(share(rng) * dfSpan)));
        }
        std::vector<unsigned char> vecByte(vec.size());
        ASSERT_EQ(FloatToByteLog(vec.data(), vecByte.data(), int(vec.size()), fLow, fHigh), 1);
        int nOff = 0;
        for (std::size_t i = 0; i < vec.size(); ++i) {
            const double df = double(vec[i]) - double(fLow);
            const double dfByte = df <= 0 ? 0 : std::min(255.0, 255 * std::log1p(df) / dfSpan);
            nOff += int(vecByte[i]) != int(dfByte);
            ASSERT_NEAR(int(vecByte[i]), dfByte - 0.5, 0.51) << vec[i] << " of " << fLow << " to " << fHigh;
        }
        EXPECT_LE(nOff, 20) << fLow << " to " << fHigh;
    }
    const float aEdge[] = {NAN, -INFINITY, INFINITY, 0, 255, 1e30f};
    unsigned char aByte[6];
    ASSERT_EQ(FloatToByteLog(aEdge, aByte, 6, 0, 255), 1);
    EXPECT_EQ(std::vector<int>(aByte, aByte + 6), (std::vector<int>{0, 0, 255, 0, 255, 255}));
    FloatToByteLog(aEdge, aByte, 6, 5, 5);
    EXPECT_EQ(std::accumulate(aByte, aByte + 6, 0), 0) << "no range";
    EXPECT_EQ(FloatToByteLog(nullptr, aByte, 6, 0, 1), 0);
}

TEST(ViewHistogram, IsEvenOrLogarithmicByTheSpanOfItsValues)
{
    std::vector<float> vec(10000);
    std::iota(vec.begin(), vec.end(), 0.f);
    vec.push_back(NAN);
    const ViewHistogram even = viewHistogram(vec.data(), int(vec.size()), 10);
    EXPECT_FALSE(even.axis.isLogarithmic());
    EXPECT_EQ(even.axis.last(), 9999);
    EXPECT_EQ(std::accumulate(even.vecCount.begin(), even.vecCount.end(), 0), 10000);
    for (const int n : even.vecCount) {
        EXPECT_NEAR(n, 1000, 12);  // what lies below the first permille is in the first bin
    }

    for (int i = 0; i < 20; ++i) {
        vec[std::size_t(i) * 400] = 4e6f;  // spots
    }
    const ViewHistogram decades = viewHistogram(vec.data(), int(vec.size()), 64);
    ASSERT_TRUE(decades.axis.isLogarithmic());
    EXPECT_EQ(decades.vecCount.back(), 20);
    EXPECT_GT(decades.axis.place(5000), 0.08) << "the background has room";
    for (const double df : {10.0, 500.0, 9000.0, 3e6}) {
        EXPECT_NEAR(decades.axis.value(decades.axis.place(df)), df, 1e-6 * df);
    }
    EXPECT_EQ(decades.axis.place(-100), 0);
    EXPECT_EQ(decades.axis.place(1e9), 1);

    const float aSame[] = {3, 3, 3};
    EXPECT_EQ(viewHistogram(aSame, 3, 4).vecCount, (std::vector<int>{3, 0, 0, 0}));
    EXPECT_TRUE(viewHistogram(vec.data() + 10000, 1, 4).vecCount.empty()) << "NaN alone";
}

}  // namespace tessera
