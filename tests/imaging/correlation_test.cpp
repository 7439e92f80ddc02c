// Correlation of images moved by a known amount.
#include "imaging/correlation.h"
#include "imaging/imageshifts.h"
#include "tests/imaging/testimages.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tessera {

namespace {

struct Result {
    std::unique_ptr<float[]> pMap;
    double dfPeak = -1.0, dfX = -99.0, dfY = -99.0;
    bool bFound = true;
};

Result correlate(const std::vector<COMPLEX>& vecA, const std::vector<COMPLEX>& vecB, int nWidth, int nHeight,
                 int nMethod, bool bTransformed = false)
{
    Result r;
    r.pMap = Correlate(vecA.data(), vecB.data(), nWidth, nHeight, nMethod, r.dfPeak, r.dfX, r.dfY,
                       bTransformed, &r.bFound);
    return r;
}

}  // namespace

TEST(Correlate, FindsTheShiftOfTheMovedFormula)
{
    // powers of two, mixed radices, an odd side, and one below the search box; shifts that wrap at every edge
    const struct {
        int nW, nH;
        double dfDX, dfDY, dfTolerance;  // whole shifts are found exactly
    } aRow[] = {{64, 64, 0.0, 0.0, 0},        {64, 64, -3.0, 2.0, 0},     {64, 32, 7.3, -4.6, 0.03},
                {64, 64, 20.5, -15.25, 0.03}, {60, 50, -0.4, 0.15, 0.03}, {60, 50, 29.0, -24.0, 0},
                {45, 63, 3.7, -9.1, 0.03},    {64, 64, 32.0, 32.0, 0},    {9, 14, 2.3, -3.6, 0.05}};
    for (const auto& [nW, nH, dfDX, dfDY, dfTolerance] : aRow) {
        for (int nMethod : {0, 1, 2}) {
            SCOPED_TRACE(testing::Message() << nW << " x " << nH << ", " << dfDX << ", " << nMethod);
            auto vecA = asComplex(spotImage(nW, nH, 0.0, 0.0)),
                 vecB = asComplex(spotImage(nW, nH, dfDX, dfDY));
            const auto image = correlate(vecA, vecB, nW, nH, nMethod);
            ASSERT_TRUE(image.pMap);
            ASSERT_TRUE(image.bFound);
            EXPECT_NEAR(image.dfX, dfDX, dfTolerance);
            EXPECT_NEAR(image.dfY, dfDY, dfTolerance);
            for (double df : {image.dfX, image.dfY}) {  // in steps of a fortieth
                EXPECT_NEAR(df * 40, std::round(df * 40), 1e-4);
            }
            EXPECT_EQ(image.dfPeak, *std::max_element(image.pMap.get(), image.pMap.get() + nW * nH));

            for (auto* pVec : {&vecA, &vecB}) {  // spectra in centred layout
                CDF2().fft2d(nW, nH, pVec->data(), 0);
                CyclicShift(pVec->data(), nW, nH, nW / 2, nH / 2);
            }
            const auto spectrum = correlate(vecA, vecB, nW, nH, nMethod, true);
            EXPECT_NEAR(spectrum.dfX, image.dfX, dfTolerance);
            EXPECT_NEAR(spectrum.dfY, image.dfY, dfTolerance);
        }
    }
}

TEST(Correlate, CentresTheMapItReturns)
{
    for (const auto& size : {std::pair<int, int>{32, 16}, {21, 33}, {30, 18}}) {
        const int nW = size.first, nH = size.second;
        const auto vecA = spotImage(nW, nH, 0.0, 0.0), vecB = spotImage(nW, nH, 3.0, -2.0);
        const auto result = correlate(asComplex(vecA), asComplex(vecB), nW, nH, 0);
        for (int nDY : {-3, 0, 2}) {
            for (int nDX : {-4, 0, 3}) {
                double dfSum = 0.0;  // the plain map is Σ a(p)·b(p + shift)
                for (int y = 0; y < nH; ++y) {
                    for (int x = 0; x < nW; ++x) {
                        dfSum += double(vecA[y * nW + x]) *
                                 double(vecB[(y + nDY + nH) % nH * nW + (x + nDX + nW) % nW]);
                    }
                }
                EXPECT_NEAR(result.pMap[(nH / 2 + nDY) * nW + nW / 2 + nDX], dfSum, 1e-5 * result.dfPeak);
            }
        }
    }
}

TEST(Correlate, BlankFramesGiveNoShift)
{
    for (const auto& [nW, nH] : {std::pair(64, 32), std::pair(45, 63)}) {
        for (float f : {0.f, 1234.5f}) {
            for (int nMethod : {0, 1, 2}) {
                const std::vector<COMPLEX> vecBlank(std::size_t(nW * nH), COMPLEX{f, 0.f});
                const auto result = correlate(asComplex(spotImage(nW, nH, 0, 0)), vecBlank, nW, nH, nMethod);
                EXPECT_FALSE(result.bFound) << nW << " " << f << " " << nMethod;
                EXPECT_EQ(result.dfX, 0);
                EXPECT_EQ(result.dfY, 0);
            }
        }
    }
}

// Both halves of the spectrum enter the map of the test above.
TEST(CrossSpectrum, WeighsByTheMethod)
{
    const struct {
        int nMethod;
        COMPLEX a, b, result;
    } aRow[] = {{0, {1, 2}, {3, 4}, {11, -2}},
                {1, {3e4f, 0}, {0, 3e4f}, {0, 9e8f / 4e4f}},
                {2, {1e4f, 0}, {0, 1e4f}, {0, 0.5f}},
                {2, {3e14f, 0}, {0, 3e14f}, {0, 1}}};  // |v|² lies beyond the range of a float
    for (const auto& row : aRow) {
        CCorrelation correlation;
        correlation.SetMethod(row.nMethod);
        const auto pResult = correlation.CrossSpectrum(1, 1, &row.a, &row.b);
        EXPECT_FLOAT_EQ(pResult[0].re, row.result.re) << row.nMethod;
        EXPECT_FLOAT_EQ(pResult[0].im, row.result.im) << row.nMethod;
    }
}

}  // namespace tessera
