// Correlation of images moved by a known amount.
#include "imaging/correlation.h"
#include "imaging/imageshifts.h"
#include "testimages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <limits>

namespace {

struct Result {
    std::unique_ptr<float[]> pMap;
    double dfPeak = -1.0;
    double dfX = -99.0;
    double dfY = -99.0;
};

Result correlate(const std::vector<COMPLEX>& vecA, const std::vector<COMPLEX>& vecB, int nWidth, int nHeight,
                 int nMethod, bool bTransformed = false)
{
    Result result;
    result.pMap = Correlate(vecA.data(), vecB.data(), nWidth, nHeight, nMethod, result.dfPeak, result.dfX,
                            result.dfY, bTransformed);
    return result;
}

}  // namespace

TEST(Correlate, FindsTheShiftOfTheMovedFormula)
{
    // powers of two, mixed radices, and an odd side; shifts that wrap at every edge
    const struct {
        int nWidth, nHeight;
        double dfDX, dfDY;
    } aRow[] = {{64, 64, 0.0, 0.0},   {64, 64, -3.0, 2.0},   {64, 32, 7.3, -4.6}, {64, 64, 20.5, -15.25},
                {60, 50, -0.4, 0.15}, {60, 50, 29.0, -24.0}, {45, 63, 3.7, -9.1}, {64, 64, 32.0, 32.0}};
    for (const auto& row : aRow)
        for (int nMethod : {0, 1, 2}) {
            SCOPED_TRACE(testing::Message() << row.nWidth << " x " << row.nHeight << ", (" << row.dfDX << ", "
                                            << row.dfDY << "), method " << nMethod);
            const auto vecA = asComplex(spotImage(row.nWidth, row.nHeight, 0.0, 0.0));
            auto vecB = asComplex(spotImage(row.nWidth, row.nHeight, row.dfDX, row.dfDY));
            const auto image = correlate(vecA, vecB, row.nWidth, row.nHeight, nMethod);
            ASSERT_TRUE(image.pMap);
            const bool bWhole = row.dfDX == std::floor(row.dfDX) && row.dfDY == std::floor(row.dfDY);
            const double dfTol = bWhole ? 0.0 : 0.03;
            EXPECT_NEAR(image.dfX, row.dfDX, dfTol);
            EXPECT_NEAR(image.dfY, row.dfDY, dfTol);

            auto vecSpectrumA = vecA;
            CDF2 df2;
            for (auto* pVec : {&vecSpectrumA, &vecB}) {
                df2.fft2d(row.nWidth, row.nHeight, pVec->data(), 0);
                CyclicShift(pVec->data(), row.nWidth, row.nHeight, row.nWidth / 2, row.nHeight / 2);
            }
            const auto spectrum = correlate(vecSpectrumA, vecB, row.nWidth, row.nHeight, nMethod, true);
            EXPECT_NEAR(spectrum.dfX, image.dfX, bWhole ? 0.0 : 0.0251)
                << "spectra give what the images give";
            EXPECT_NEAR(spectrum.dfY, image.dfY, bWhole ? 0.0 : 0.0251);
        }
}

TEST(Correlate, CentresTheMapItReturns)
{
    for (const auto& size : {std::pair<int, int>{32, 16}, {21, 33}, {30, 18}}) {
        const auto vecA = asComplex(spotImage(size.first, size.second, 0.0, 0.0));
        const auto vecB = asComplex(spotImage(size.first, size.second, 3.0, -2.0));
        const auto result = correlate(vecA, vecB, size.first, size.second, 0);
        // the plain map is Σ a(p)·b(p + shift)
        for (int nDY : {-3, 0, 2})
            for (int nDX : {-4, 0, 3}) {
                double dfSum = 0.0;
                for (int y = 0; y < size.second; y++)
                    for (int x = 0; x < size.first; x++)
                        dfSum += double(vecA[y * size.first + x].re) *
                                 vecB[(y + nDY + size.second) % size.second * size.first +
                                      (x + nDX + size.first) % size.first]
                                     .re;
                EXPECT_NEAR(result.pMap[(size.second / 2 + nDY) * size.first + size.first / 2 + nDX], dfSum,
                            1e-5 * result.dfPeak);
            }
    }
}

TEST(Correlate, RefusesWhatItCannotDoAndLeavesTheOutputs)
{
    const auto vec = asComplex(spotImage(16, 16, 0.0, 0.0));
    testing::internal::CaptureStdout();
    const auto result = correlate(vec, vec, 16, 16, 3);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unknown correlation method.\n");
    EXPECT_FALSE(result.pMap);
    EXPECT_EQ(result.dfX, -99.0);
    double dfPeak = 7.0, dfX = 7.0, dfY = 7.0;
    EXPECT_FALSE(Correlate(nullptr, vec.data(), 16, 16, 1, dfPeak, dfX, dfY));
    EXPECT_FALSE(Correlate(vec.data(), vec.data(), 0, 16, 1, dfPeak, dfX, dfY));
    EXPECT_EQ(dfPeak + dfX + dfY, 21.0);
}

TEST(CrossSpectrum, IsTheWeightedProductAtEveryElementOfBothHalves)
{
    for (const auto& size : {std::pair<int, int>{8, 6}, {9, 7}, {6, 9}, {1, 4}, {5, 1}}) {
        const int n = size.first * size.second;
        auto vecA = asComplex(spotImage(size.first, size.second, 0.0, 0.0));
        auto vecB = asComplex(waveImage(size.first, size.second, 0.5, 0.5));
        CDF2 df2;
        for (auto* pVec : {&vecA, &vecB})
            df2.fft2d(size.first, size.second, pVec->data(), 0);
        for (int nMethod : {0, 1, 2}) {
            CCorrelation correlation;
            correlation.SetMethod(nMethod);
            const auto pResult = correlation.CrossSpectrum(size.first, size.second, vecA.data(), vecB.data());
            double dfLargest = 0.0;
            for (int i = 0; i < n; i++)
                dfLargest = std::max(dfLargest, double(std::hypot(pResult[i].re, pResult[i].im)));
            for (int i = 0; i < n; i++) {
                std::complex<double> v = std::conj(std::complex<double>(vecA[i].re, vecA[i].im)) *
                                         std::complex<double>(vecB[i].re, vecB[i].im);
                if (nMethod == 1)
                    v /= std::sqrt(std::abs(v)) + 1e4;
                if (nMethod == 2)
                    v /= std::abs(v) + 1e8;
                EXPECT_NEAR(pResult[i].re, v.real(), 1e-5 * dfLargest) << size.first << " " << i;
                EXPECT_NEAR(pResult[i].im, v.imag(), 1e-5 * dfLargest) << size.first << " " << i;
            }
        }
    }
    // |v|² beyond the range of a float: phase correlation still gives a phase
    const COMPLEX a{3e14f, 0.f}, b{0.f, 3e14f};
    CCorrelation correlation;
    correlation.SetMethod(2);
    EXPECT_NEAR(correlation.CrossSpectrum(1, 1, &a, &b)[0].im, 1.0, 1e-6);
}

TEST(FindCorrelationPeak, WorksAtEveryEdgeAndOnMapsSmallerThanItsBox)
{
    const auto check = [](int nWidth, int nHeight, double dfX, double dfY) {
        std::vector<float> vecMap;  // one periodic hill at (dfX, dfY)
        const double dfTwoPi = 2 * std::acos(-1.0);
        for (int y = 0; y < nHeight; y++)
            for (int x = 0; x < nWidth; x++)
                vecMap.push_back(
                    float(std::cos(dfTwoPi * (x - dfX) / nWidth) + std::cos(dfTwoPi * (y - dfY) / nHeight)));
        double dfPeak = 0.0;
        float fX = 0.f, fY = 0.f;
        const double dfLargest = *std::max_element(vecMap.begin(), vecMap.end());
        ASSERT_EQ(CCorrelation().FindCorrelationPeak(vecMap.data(), nWidth, nHeight, dfPeak, fX, fY), 1);
        EXPECT_EQ(dfPeak, dfLargest);
        const auto apart = [](double df, int nSide) { return std::abs(df - nSide * std::round(df / nSide)); };
        EXPECT_LT(apart(fX - dfX, nWidth), 0.03) << nWidth << " " << dfX << " gives " << fX;
        EXPECT_LT(apart(fY - dfY, nHeight), 0.03) << nHeight << " " << dfY << " gives " << fY;
    };
    for (double dfX = 0.0; dfX < 16.0; dfX += 0.7)
        for (double dfY : {0.2, 5.3, 9.0, 10.6, 11.0, 11.8})
            check(16, 12, dfX, dfY);
    for (int nSide : {4, 5, 6, 8, 9, 10, 11})
        for (double dfX : {0.0, 1.25, nSide - 0.5, nSide / 2.0})
            check(nSide, 12, dfX, 3.3);
}

TEST(FindCorrelationPeak, TakesTheFirstOfEqualMaximaAndSurvivesAnyMap)
{
    std::vector<float> vecMap(40 * 30, 0.f);
    vecMap[10 * 40 + 12] = vecMap[10 * 40 + 30] = vecMap[20 * 40 + 5] = 4.f;
    double dfPeak = 0.0;
    float fX = 0.f, fY = 0.f;
    CCorrelation().FindCorrelationPeak(vecMap.data(), 40, 30, dfPeak, fX, fY);
    EXPECT_EQ(fX, 12.f);
    EXPECT_EQ(fY, 10.f);
    EXPECT_EQ(dfPeak, 4.0);
    for (float f : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 0.f})
        for (int nSide : {1, 3, 10, 11}) {
            std::vector<float> vecFlat(std::size_t(nSide * nSide), f);
            EXPECT_EQ(CCorrelation().FindCorrelationPeak(vecFlat.data(), nSide, nSide, dfPeak, fX, fY), 1);
            EXPECT_TRUE(std::abs(fX) <= nSide && std::abs(fY) <= nSide) << f << " " << nSide;
        }
}
