// Both transforms against the defining sum.
#include "imaging/acmlfft.h"
#include "imaging/cdf2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <random>
#include <vector>

namespace tessera {

namespace {

using Complex = std::complex<double>;
const double g_dfPi = std::acos(-1.0);

std::vector<COMPLEX> randomImage(int n)
{
    std::mt19937 engine(1);
    std::uniform_real_distribution<float> distribution(-1.f, 1.f);
    std::vector<COMPLEX> vec;
    for (int i = 0; i < n; ++i) {
        const float fRe = distribution(engine);
        vec.push_back({fRe, distribution(engine)});
    }
    return vec;
}

std::vector<Complex> inDouble(const std::vector<COMPLEX>& vecIn)
{
    std::vector<Complex> vec;
    for (const COMPLEX& c : vecIn) {
        vec.emplace_back(c.re, c.im);
    }
    return vec;
}

// Slow and obvious: Σ x·exp(−2πi jk/n) along one axis of a W × H image, then along the other.
std::vector<Complex> directSum(const std::vector<COMPLEX>& vecIn, int nWidth, int nHeight)
{
    const auto line = [](std::vector<Complex>& vec, int nStart, int nStep, int n) {
        std::vector<Complex> vecSum(n, Complex(0.0));
        for (int k = 0; k < n; ++k) {
            for (int j = 0; j < n; ++j) {
                vecSum[k] += vec[nStart + j * nStep] *
                             std::polar(1.0, -2.0 * g_dfPi * ((long(j) * k) % n) / n);
            }
        }
        for (int k = 0; k < n; ++k) {
            vec[nStart + k * nStep] = vecSum[k];
        }
    };
    std::vector<Complex> vec = inDouble(vecIn);
    for (int y = 0; y < nHeight; ++y) {
        line(vec, y * nWidth, 1, nWidth);
    }
    for (int x = 0; x < nWidth; ++x) {
        line(vec, x, nWidth, nHeight);
    }
    return vec;
}

double largestDifference(const std::vector<COMPLEX>& vecA, const std::vector<Complex>& vecB)
{
    double dfLargest = 0.0;
    for (std::size_t i = 0; i < vecA.size(); ++i) {
        const double dfDifference = std::abs(Complex(vecA[i].re, vecA[i].im) - vecB[i]);
        if (!(dfDifference <= dfLargest)) {  // keeps what is not a number
            dfLargest = dfDifference;
        }
    }
    return dfLargest;
}

}  // namespace

TEST(Transforms, AreTheDefiningSumForwardAndComeBack)
{
    CAcmlFft fft;
    CDF2 df2;
    std::vector<std::pair<int, int>> vecSize{{1, 7}, {8, 8}, {64, 32}, {15, 17}, {50, 13}, {31, 121}};
    for (int n = 1; n <= 64; ++n) {
        vecSize.emplace_back(n, 1);
    }
    // 128 trades 8 × 2 for 4 × 4; squares of primes; primes on both sides of the work vectors
    for (int n : {128, 160, 169, 343, 720, 1000, 1001, 1999, 2003}) {
        vecSize.emplace_back(n, 1);
    }
    for (const auto& [nW, nH] : vecSize) {
        for (bool bDF2 : {false, true}) {
            SCOPED_TRACE(testing::Message() << nW << " x " << nH << (bDF2 ? ", mixed radix" : ""));
            const auto vecImage = randomImage(nW * nH);
            auto vec = vecImage;
            ASSERT_EQ(bDF2 ? df2.fft2d(nW, nH, vec.data(), 0) : fft.Transform(vec.data(), nW, nH, -1), 1);
            EXPECT_LT(largestDifference(vec, directSum(vecImage, nW, nH)), 3e-6 * std::sqrt(double(nW * nH)));
            ASSERT_EQ(bDF2 ? df2.fft2d(nW, nH, vec.data(), 1) : fft.Transform(vec.data(), nW, nH, 1), 1);
            EXPECT_LT(largestDifference(vec, inDouble(vecImage)), 2e-6);
        }
    }
}

// Codelets chosen by the alignment of the caller's buffer would differ in the last bit.
TEST(CAcmlFft, DoesNotDependOnWhereTheBufferLies)
{
    for (const auto& [nW, nH] : {std::pair(96, 75), std::pair(128, 64), std::pair(61, 40)}) {
        const auto vecImage = randomImage(nW * nH);
        std::vector<COMPLEX> vecFirst;
        for (int nOffset = 0; nOffset < 8; ++nOffset) {
            std::vector<COMPLEX> vec(vecImage.size() + 8);
            std::copy(vecImage.begin(), vecImage.end(), vec.begin() + nOffset);
            CAcmlFft().Transform(vec.data() + nOffset, nW, nH, -1);
            vec.erase(vec.begin(), vec.begin() + nOffset);
            EXPECT_TRUE(nOffset == 0 || !std::memcmp(vec.data(), vecFirst.data(), 8 * vecImage.size()));
            vecFirst = vec;
        }
    }
}

TEST(AcmlFft, FiltersInPlaceToTheBitWhatItFiltersIntoImages)
{
    for (const auto& [nW, nH] : {std::pair(24, 18), {17, 31}, {64, 40}, {1, 1}, {7, 300}, {130, 9}}) {
        const std::vector<COMPLEX> vecFilter = randomImage(int(CAcmlFft::HalfCount(nW, nH)));
        const std::vector<COMPLEX> vecImage = randomImage(nW * nH);
        const auto fill = [&, nWidth = nW](int nRow, float* pRow) {
            for (int x = 0; x < nWidth; ++x) {
                pRow[x] = vecImage[nRow * nWidth + x].re;
            }
        };
        CAcmlFft fft;
        const std::size_t nHalf = vecFilter.size(), nPixels = std::size_t(nW) * std::size_t(nH);
        std::vector<COMPLEX> vecHalf(nHalf), vecWork(2 * nHalf), vecPlace(2 * nHalf);
        std::vector<float> vecS(nPixels), vecB(nPixels), vecRows;
        ASSERT_EQ(fft.TransformReal(fill, nW, nH, vecHalf.data()), 1);
        ASSERT_EQ(fft.TransformFiltered(vecHalf.data(), vecFilter.data(), nW, nH, vecWork.data(),
                                        {vecS.data(), 0.5f}, {vecB.data(), -2.f}),
                  1);
        ASSERT_EQ(fft.TransformReal(fill, nW, nH, vecPlace.data() + nHalf), 1);
        ASSERT_EQ(fft.FilterInPlace(vecPlace.data(), vecFilter.data(), nW, nH, {true, 0.5f}, -2.f,
                                    [&, nWidth = nW](int, const float* pRow) {
                                        vecRows.insert(vecRows.end(), pRow, pRow + nWidth);
                                    }),
                  1);
        EXPECT_EQ(vecRows, vecB) << nW << " " << nH;
        for (int i = 0; i < nW * nH; ++i) {
            ASSERT_EQ(CAcmlFft::KeptPixel(vecPlace.data(), i % nW, i / nW, nH), vecS[i]) << i;
        }
    }
}

}  // namespace tessera
