// The search for the maximum of an enlarged image, and for that of long data.
#include "imaging/maximumsearch.h"
#include "imaging/resizebicubic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace tessera {

TEST(FindResizedMaximum, IsTheFirstMaximumOfTheResizedImage)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<float> noise(-1.f, 1.f);
    const struct {
        int nWidth, nHeight, nTargetWidth, nTargetHeight;
        float fPeak, fNoise, fBase;
    } aRow[] = {{10, 10, 400, 400, 100.f, 1.f, 0.f}, {10, 10, 400, 400, 3.f, 1.f, -1e6f},
                {10, 10, 400, 400, 0.f, 0.f, 7.f},   {9, 7, 100, 93, 5.f, 1.f, -20.f},
                {12, 5, 6, 40, 0.f, 1.f, 0.f},       {1, 1, 30, 30, 0.f, 1.f, 0.f},
                {3, 40, 17, 5, 1.f, 1.f, 1e30f}};
    for (const auto& row : aRow) {
        for (int nNaN : {-1, 0, 3}) {
            std::vector<float> vec;
            for (int i = 0; i < row.nWidth * row.nHeight; ++i) {
                const double dfX = i % row.nWidth - 0.4 * row.nWidth,
                             dfY = i / row.nWidth - 0.6 * row.nHeight;
                vec.push_back(row.fBase + row.fPeak * float(std::exp(-(dfX * dfX + dfY * dfY) / 8)) +
                              row.fNoise * noise(random));
                if (i == nNaN) {
                    vec.back() = NAN;
                }
            }
            std::vector<float> vecAll(std::size_t(row.nTargetWidth * row.nTargetHeight));
            ResizeBicubic(vecAll.data(), row.nTargetWidth, row.nTargetHeight, vec.data(), row.nWidth,
                          row.nHeight);
            int nExpectedX = -1, nExpectedY = -1, nX = -1, nY = -1;
            FindMaximum(vecAll.data(), row.nTargetWidth, row.nTargetHeight, nullptr, &nExpectedX,
                        &nExpectedY);
            ASSERT_EQ(FindResizedMaximum(row.nTargetWidth, row.nTargetHeight, vec.data(), row.nWidth,
                                         row.nHeight, &nX, &nY),
                      1);
            EXPECT_EQ(nX, nExpectedX) << row.nTargetWidth << " " << nNaN;
            EXPECT_EQ(nY, nExpectedY) << row.nTargetWidth << " " << nNaN;
        }
    }
}

TEST(FindMaximum, TakesTheFirstInLongDataToo)
{
    for (int nPlace = 0; nPlace < 300; ++nPlace) {
        std::vector<float> vec(300);
        for (int i = 0; i < 300; ++i) {
            vec[i] = i == nPlace || i == 299 ? 500.f : float(i);
        }
        EXPECT_EQ(FindMaximumIndex(vec.data(), 300), nPlace);
    }
}

}  // namespace tessera
