// Both transforms against the defining sum.
#include "imaging/acmlfft.h"
#include "imaging/cdf2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <functional>
#include <random>
#include <thread>
#include <vector>

namespace {

using Complex = std::complex<double>;
const double dfPi = std::acos(-1.0);

std::vector<COMPLEX> randomImage(int n, unsigned nSeed = 1)
{
    std::mt19937 engine(nSeed);
    std::uniform_real_distribution<float> distribution(-1.f, 1.f);
    std::vector<COMPLEX> vec;
    for (int i = 0; i < n; i++) {
        const float fRe = distribution(engine);
        vec.push_back({fRe, distribution(engine)});
    }
    return vec;
}

// Slow and obvious: Σ x·exp(−2πi jk/n) along one axis of a W × H image, then along the other.
std::vector<Complex> directSum(const std::vector<COMPLEX>& vecIn, int nWidth, int nHeight)
{
    const auto line = [](std::vector<Complex>& vec, int nStart, int nStep, int n) {
        std::vector<Complex> vecSum(std::size_t(n), Complex(0.0));
        for (int k = 0; k < n; k++)
            for (int j = 0; j < n; j++)
                vecSum[k] += vec[nStart + j * nStep] * std::polar(1.0, -2.0 * dfPi * ((long(j) * k) % n) / n);
        for (int k = 0; k < n; k++)
            vec[nStart + k * nStep] = vecSum[k];
    };
    std::vector<Complex> vec;
    for (const COMPLEX& c : vecIn)
        vec.emplace_back(c.re, c.im);
    for (int y = 0; y < nHeight; y++)
        line(vec, y * nWidth, 1, nWidth);
    for (int x = 0; x < nWidth; x++)
        line(vec, x, nWidth, nHeight);
    return vec;
}

template <typename Vec>
double largestDifference(const std::vector<COMPLEX>& vecA, const Vec& vecB)
{
    double dfLargest = 0.0;
    for (std::size_t i = 0; i < vecA.size(); i++) {
        Complex b;
        if constexpr (std::is_same<Vec, std::vector<Complex>>::value)
            b = vecB[i];
        else
            b = Complex(vecB[i].re, vecB[i].im);
        const double dfDifference = std::abs(Complex(vecA[i].re, vecA[i].im) - b);
        if (!(dfDifference <= dfLargest))  // keeps what is not a number
            dfLargest = dfDifference;
    }
    return dfLargest;
}

bool sameBytes(const std::vector<COMPLEX>& vecA, const std::vector<COMPLEX>& vecB)
{
    return vecA.size() == vecB.size() &&
           !std::memcmp(vecA.data(), vecB.data(), vecA.size() * sizeof(COMPLEX));
}

const struct {
    int nWidth, nHeight;
} aSize[] = {{1, 1},   {1, 7},   {8, 8},  {64, 32},  {32, 64}, {9, 20},
             {15, 17}, {50, 13}, {70, 3}, {100, 96}, {31, 121}};

}  // namespace

TEST(Transforms, AreTheDefiningSumForwardAndComeBack)
{
    CAcmlFft fft;
    CDF2 df2;
    const std::function<int(COMPLEX*, int, int, bool)> aTransform[] = {
        [&](COMPLEX* p, int nWidth, int nHeight, bool bForward) {
            return fft.Transform(p, nWidth, nHeight, bForward ? -1 : 1);
        },
        [&](COMPLEX* p, int nWidth, int nHeight, bool bForward) {
            return df2.fft2d(nWidth, nHeight, p, bForward ? 0 : 1);
        }};
    for (const auto& transform : aTransform)
        for (const auto& size : aSize) {
            SCOPED_TRACE(testing::Message() << size.nWidth << " x " << size.nHeight);
            const auto vecImage = randomImage(size.nWidth * size.nHeight);
            auto vec = vecImage;
            ASSERT_EQ(transform(vec.data(), size.nWidth, size.nHeight, true), 1);
            const double dfTol = 3e-6 * std::sqrt(double(vec.size()));
            EXPECT_LT(largestDifference(vec, directSum(vecImage, size.nWidth, size.nHeight)), dfTol);
            ASSERT_EQ(transform(vec.data(), size.nWidth, size.nHeight, false), 1);
            EXPECT_LT(largestDifference(vec, vecImage), 2e-6);
        }
    COMPLEX value{1.f, 2.f};
    EXPECT_EQ(df2.fft2d(1, 1, &value, 2) + df2.fft2d(0, 1, &value, 0) + df2.fft2d(1, 1, nullptr, 0), 0);
}

TEST(CAcmlFft, KeepsItsPlanWhileTheSizeStays)
{
    CAcmlFft fft;
    EXPECT_EQ(fft.Init(16, 8), 1);
    EXPECT_EQ(fft.Init(16, 8), 2);
    auto vec = randomImage(128);
    EXPECT_EQ(fft.Transform(vec.data(), 8, 16, -1), 1);
    EXPECT_EQ(fft.Init(8, 16), 2);
    EXPECT_EQ(fft.Init(16, 8), 1) << "the earlier size replaces the plan again";
    const auto vecBefore = vec;
    EXPECT_EQ(fft.Transform(nullptr, 16, 8, -1), 0);
    for (const auto& size : {std::pair<int, int>{0, 8}, {8, -1}, {65536, 65536}}) {
        EXPECT_EQ(fft.Transform(vec.data(), size.first, size.second, -1), 0);
        EXPECT_EQ(fft.Width(), 0);
        EXPECT_EQ(fft.Height(), 0);
    }
    EXPECT_TRUE(sameBytes(vec, vecBefore));
}

// Codelets chosen by the alignment of the caller's buffer would differ in the last bit.
TEST(CAcmlFft, DoesNotDependOnWhereTheBufferLiesNorOnTheThread)
{
    for (const auto& size : {std::pair<int, int>{96, 75}, {128, 64}, {61, 40}}) {
        const int n = size.first * size.second;
        const auto vecImage = randomImage(n, 5);
        std::vector<std::vector<COMPLEX>> vecResult(8);
        std::vector<std::thread> vecThread;
        for (std::size_t nOffset = 0; nOffset < vecResult.size(); nOffset++)
            vecThread.emplace_back([&, nOffset] {
                std::vector<COMPLEX> vecBuffer(std::size_t(n) + 8);
                COMPLEX* pData = vecBuffer.data() + nOffset;
                std::copy(vecImage.begin(), vecImage.end(), pData);
                CAcmlFft fft;
                fft.Transform(pData, size.first, size.second, -1);
                vecResult[nOffset].assign(pData, pData + n);
            });
        for (auto& thread : vecThread)
            thread.join();
        for (const auto& vec : vecResult)
            EXPECT_TRUE(sameBytes(vec, vecResult[0]));
    }
}

TEST(CDF2, IsTheDefiningSumAtEveryKindOfLength)
{
    CDF2 df2;
    std::vector<int> vecLength(130);
    for (int i = 0; i < 130; i++)
        vecLength[std::size_t(i)] = i + 1;
    // 16 and 128 trade 8 × 2 for 4 × 4; squares of primes; primes on both sides of the work vectors
    for (int n : {128, 160, 169, 343, 625, 720, 1000, 1001, 1024, 1999, 2003, 4006})
        vecLength.push_back(n);
    for (int n : vecLength) {
        const auto vecImage = randomImage(n, unsigned(n));
        auto vecIn = vecImage;
        std::vector<COMPLEX> vecOut(vecIn.size(), COMPLEX{NAN, NAN});
        ASSERT_EQ(df2.fft(n, vecIn.data(), vecOut.data(), 0), 1);
        EXPECT_LT(largestDifference(vecOut, directSum(vecImage, n, 1)), 1e-6 * std::sqrt(double(n)) * 3) << n;
        EXPECT_TRUE(sameBytes(vecIn, vecImage)) << "forward leaves its input";
        std::vector<COMPLEX> vecBack(vecIn.size());
        ASSERT_EQ(df2.fft(n, vecOut.data(), vecBack.data(), 1), 1);
        EXPECT_LT(largestDifference(vecBack, vecImage), 2e-6) << n;
    }
}
