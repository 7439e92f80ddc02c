// Shifts of images by whole pixels and fractions.
#include "imaging/acmlfft.h"
#include "imaging/imageshifts.h"
#include "tests/imaging/testimages.h"

#include <gtest/gtest.h>

#include <climits>

namespace tessera {

namespace {

// Where each element of a numbered image must be after a cyclic shift.
std::vector<float> numbered(int nWidth, int nHeight, long nDX, long nDY)
{
    std::vector<float> vec(std::size_t(nWidth) * std::size_t(nHeight));
    for (long y = 0; y < nHeight; ++y) {
        for (long x = 0; x < nWidth; ++x) {
            const long nX = ((x + nDX) % nWidth + nWidth) % nWidth;
            const long nY = ((y + nDY) % nHeight + nHeight) % nHeight;
            vec[nY * nWidth + nX] = float(y * nWidth + x);
        }
    }
    return vec;
}

}  // namespace

TEST(Shifts, PutEveryPixelWhereTheRemainderSays)
{
    for (int nDX : {0, 1, -1, 7, -8, 20, INT_MAX, INT_MIN}) {
        for (int nDY : {0, 2, -1, 5, -13, INT_MAX, INT_MIN}) {
            auto vec = numbered(7, 5, 0, 0);
            ASSERT_EQ(CyclicShift(vec.data(), 7, 5, nDX, nDY), 1);
            EXPECT_EQ(vec, numbered(7, 5, nDX, nDY)) << nDX << " " << nDY;
        }
    }
    auto vec = numbered(6, 4, 0, 0);
    ASSERT_EQ(ShiftCenter(vec.data(), 6, 4), 1);
    EXPECT_EQ(vec, numbered(6, 4, 3, 2));
}

TEST(FourierShift, GivesTheImageOfTheMovedFormula)
{
    CAcmlFft fft;
    const struct {
        int nWidth, nHeight;
        double dfDX, dfDY;
        bool bCentred;
    } aRow[] = {{64, 48, 0.3, -1.7, false}, {64, 48, 0.3, -1.7, true}, {42, 48, -5.25, 8.5, false},
                {40, 40, 3.0, -2.0, false}, {47, 51, 0.6, 2.4, true},  {40, 40, 0.0, 0.0, true}};
    for (const auto& row : aRow) {
        auto vec = asComplex(spotImage(row.nWidth, row.nHeight, 0.0, 0.0));
        const auto vecMoved = spotImage(row.nWidth, row.nHeight, row.dfDX, row.dfDY);
        const int nHalfX = row.bCentred ? row.nWidth / 2 : 0;
        const int nHalfY = row.bCentred ? row.nHeight / 2 : 0;
        fft.Transform(vec.data(), row.nWidth, row.nHeight, -1);
        CyclicShift(vec.data(), row.nWidth, row.nHeight, nHalfX, nHalfY);
        ASSERT_EQ(FourierShift(vec.data(), row.nWidth, row.nHeight, row.dfDX, row.dfDY, row.bCentred), 1);
        CyclicShift(vec.data(), row.nWidth, row.nHeight, -nHalfX, -nHalfY);
        fft.Transform(vec.data(), row.nWidth, row.nHeight, 1);
        for (std::size_t i = 0; i < vec.size(); ++i) {
            ASSERT_NEAR(vec[i].re, vecMoved[i], 2e-2) << row.nWidth << " x " << row.nHeight << " at " << i;
            ASSERT_NEAR(vec[i].im, 0.f, 2e-2);
        }
    }
}

}  // namespace tessera
