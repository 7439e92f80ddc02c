// Filters, maxima and resampling.
#include "imaging/flipvertical.h"
#include "imaging/imagefilters.h"
#include "imaging/maximumsearch.h"
#include "imaging/resizebicubic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

namespace tessera {

TEST(MakeRingMask, CountsTheLatticePointsOfItsRing)
{
    std::vector<char> vecMask(32 * 32, 7);
    const double aRow[][3] = {{0, 4, 49}, {-1, 4, 48}, {-1, 10, 316}, {5, 5, 12}, {0, 0, 1}, {3, 2, 0}};
    for (const auto& [dfInner, dfOuter, dfPoints] : aRow) {  // Gauss' circle numbers
        ASSERT_EQ(MakeRingMask(vecMask.data(), 32, 32, dfInner, dfOuter), 1);
        EXPECT_EQ(std::accumulate(vecMask.begin(), vecMask.end(), 0), dfPoints) << dfInner << " " << dfOuter;
        EXPECT_EQ(vecMask[16 * 32 + 16], dfInner == 0);
    }
}

TEST(FindMaximum, TakesTheFirstAndPassesOverWhatIsNoNumber)
{
    const float aRow[][6] = {{1, 5, 2, 4, 0, 5}, {NAN, 7, NAN, 7, 7, 7}, {-3, -2, -4, -2, -5, -6}};
    for (const auto& row : aRow) {
        double dfValue = 0.0;
        int nX = -1, nY = -1;
        ASSERT_EQ(FindMaximum(row, 3, 2, &dfValue, &nX, &nY), 1);
        EXPECT_EQ(nX, 1);
        EXPECT_EQ(nY, 0);
        EXPECT_EQ(FindMaximumIndex(row, 6), 1);
        EXPECT_EQ(dfValue, double(row[1]));
    }
}

TEST(FlipVertical, PutsTheLastRowFirst)
{
    const auto expectFlipped = [](auto nValue, int nHeight) {
        std::vector<decltype(nValue)> vec(size_t(5 * nHeight)), vecWanted(vec.size());
        for (size_t i = 0; i < vec.size(); ++i) {
            vec[i] = decltype(nValue)(i);
            vecWanted[vec.size() - 5 - i / 5 * 5 + i % 5] = vec[i];
        }
        EXPECT_EQ(FlipVertical(vec.data(), 5, nHeight), 1);
        EXPECT_EQ(vec, vecWanted) << sizeof(nValue) << " bytes, " << nHeight << " rows";
    };
    for (int nHeight : {1, 2, 7}) {
        expectFlipped(std::uint8_t(), nHeight);
        expectFlipped(std::int16_t(), nHeight);
        expectFlipped(float(), nHeight);
    }
    float f = 3;
    EXPECT_EQ(FlipVertical<float>(nullptr, 1, 1), 0);
    EXPECT_EQ(FlipVertical(&f, 0, 1), 0);
    EXPECT_EQ(FlipVertical(&f, 1, 0), 0);
}

// The uniform cubic B-spline keeps slopes, lifts x² by 1/3, and has the edge pixels beyond each edge.
TEST(ResizeBicubic, HasTheMomentsOfTheCubicBSpline)
{
    const int nWidth = 12, nHeight = 9, nFactor = 5, nW = nWidth * nFactor, nH = nHeight * nFactor;
    std::vector<float> vecPolynomial, vec(nW * nH);
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            vecPolynomial.push_back(float(x * x - 2 * y + 0.5 * x * y));
        }
    }
    ASSERT_EQ(ResizeBicubic(vec.data(), nW, nH, vecPolynomial.data(), nWidth, nHeight), 1);
    for (int j = nFactor; j < nH - 2 * nFactor; ++j) {
        for (int i = nFactor; i < nW - 2 * nFactor; ++i) {
            const double x = double(i) / nFactor, y = double(j) / nFactor;
            ASSERT_NEAR(vec[j * nW + i], x * x + 1.0 / 3.0 - 2 * y + 0.5 * x * y, 2e-4) << i << " " << j;
        }
    }
    const float aEdge[][2][3] = {{{9, 0, 0}, {7.5f, 1.5f, 0}}, {{0, 0, 9}, {0, 1.5f, 7.5f}}};
    for (const auto& [aSource, aExpected] : aEdge) {
        for (int nColumns : {3, 1}) {
            ResizeBicubic(vec.data(), nColumns, 4 - nColumns, aSource, nColumns, 4 - nColumns);
            for (int i = 0; i < 3; ++i) {
                EXPECT_NEAR(vec[i], aExpected[i], 1e-5) << nColumns << " " << i;
            }
        }
    }
}

}  // namespace tessera
