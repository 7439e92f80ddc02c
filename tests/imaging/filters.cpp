// Filters, maxima and resampling.
#include "imaging/acmlfft.h"
#include "imaging/imageconversion.h"
#include "imaging/imagefilters.h"
#include "imaging/maximumsearch.h"
#include "imaging/resizebicubic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

TEST(MakeGaussian, TransformsToTheGaussianOfItsTransferFunction)
{
    const double dfPi = std::acos(-1.0);
    CAcmlFft fft;
    for (const auto& size : {std::pair<int, int>{64, 48}, {51, 64}})
        for (float fSigma : {1.5f, 4.f}) {
            CImgObj<float> img;
            CImgObj<COMPLEX> imgFT;
            ASSERT_EQ(MakeGaussian(img, size.first, size.second, fSigma), 1);
            ComplexFromFloat(img, imgFT);
            fft.Transform(imgFT.Data(), size.first, size.second, -1);
            for (int v : {0, 1, 5, -3})
                for (int u : {0, 2, -4}) {
                    const double dfFrequency2 =
                        std::pow(double(u) / size.first, 2) + std::pow(double(v) / size.second, 2);
                    const COMPLEX& value = imgFT.Data()[(v + size.second) % size.second * size.first +
                                                        (u + size.first) % size.first];
                    EXPECT_NEAR(value.re, std::exp(-2 * dfPi * dfPi * fSigma * fSigma * dfFrequency2), 2e-5);
                    EXPECT_NEAR(value.im, 0.f, 1e-5);
                }
        }
}

TEST(MakeGaussian, ServesWideFramesAndPassesEverythingWithoutWidth)
{
    CImgObj<float> img;
    ASSERT_EQ(MakeGaussian(img, 6001, 3, 2000.f), 1);  // a table for half of 4094 pixels would end at 2047
    const double dfExpected = std::exp(-3000.0 * 3000.0 / (2 * 2000.0 * 2000.0));
    EXPECT_NEAR(img.Data()[3001] / img.Data()[0], dfExpected, 1e-6);
    EXPECT_NEAR(img.Data()[3000] / img.Data()[0], std::exp(-std::pow(3001 / 2000.0, 2) / 2), 1e-6);
    for (float fSigma : {0.f, 1e-25f, std::numeric_limits<float>::quiet_NaN()}) {
        ASSERT_EQ(MakeGaussian(img, 8, 8, fSigma), 1);
        for (int i = 0; i < 64; i++)
            EXPECT_EQ(img.Data()[i], i == 0 ? 1.f : 0.f);
    }
}

TEST(MakeRingMask, CountsTheLatticePointsOfItsRing)
{
    std::vector<char> vecMask(32 * 32, 7);
    const struct {
        double dfInner, dfOuter;
        int nPoints;
    } aRow[] = {{0, 4, 49}, {-1, 4, 48}, {-1, 10, 316},
                {5, 5, 12}, {0, 0, 1},   {3, 2, 0}};  // Gauss' circle numbers
    for (const auto& row : aRow) {
        ASSERT_EQ(MakeRingMask(vecMask.data(), 32, 32, row.dfInner, row.dfOuter), 1);
        int nPoints = 0;
        for (char c : vecMask)
            nPoints += c;
        EXPECT_EQ(nPoints, row.nPoints) << row.dfInner << " " << row.dfOuter;
        EXPECT_EQ(vecMask[16 * 32 + 16], row.dfInner == 0);
    }
    EXPECT_EQ(MakeRingMask(nullptr, 32, 32, 0, 1), 0);
}

TEST(SpectrumArithmetic, WorksOnBothPartsInSinglePrecision)
{
    const float fThird = 1.f / 3.f;
    COMPLEX aA[2] = {{1.f, -2.f}, {0.1f, 16777216.f}};
    const COMPLEX aB[2] = {{4.f, 5.f}, {0.2f, 1.f}};
    AddComplex(aA, aB, 2);
    EXPECT_EQ(aA[0].im, 3.f);
    EXPECT_EQ(aA[1].im, 16777216.f) << "rounded to float";
    ScaleComplex(aA, 1, 1.0 / 3.0);
    EXPECT_EQ(aA[0].re, 5.f * fThird);
    EXPECT_EQ(aA[0].im, 3.f * fThird);
    const char aMask[2] = {0, -2};
    const float aF[2] = {9.f, 0.5f};
    MultiplyByMask(aA, aMask, 2);
    MultiplyByFloat(aA, aF, 2);
    EXPECT_EQ(aA[0].re, 0.f);
    EXPECT_EQ(aA[1].im, -16777216.f);
    float aSum[2] = {1.f, 2.f};
    AddFloat(aSum, aF, 2);
    EXPECT_EQ(aSum[1], 2.5f);
    EXPECT_EQ(AddComplex(nullptr, aB, 2) + MultiplyByMask(aA, nullptr, 2) + AddFloat(aSum, nullptr, 2), 0);
}

TEST(FindMaximum, TakesTheFirstAndPassesOverWhatIsNoNumber)
{
    const float fNan = std::numeric_limits<float>::quiet_NaN();
    const struct {
        std::vector<float> vec;
        int nIndex;
    } aRow[] = {{{1, 5, 2, 5, 0, 5}, 1},
                {{-3, -2, -4, -2, -5, -6}, 1},
                {{7, 7, 7, 7, 7, 7}, 0},
                {{fNan, 1, 2, fNan, 3, 0}, 4},
                {{fNan, fNan, fNan, fNan, fNan, fNan}, 0},
                {{-INFINITY, 1, 2, 3, 4, INFINITY}, 5}};
    for (const auto& row : aRow) {
        double dfValue = -1.0;
        int nX = -1, nY = -1;
        ASSERT_EQ(FindMaximum(row.vec.data(), 3, 2, &dfValue, &nX, &nY), 1);
        EXPECT_EQ(nY * 3 + nX, row.nIndex);
        EXPECT_EQ(FindMaximumIndex(row.vec.data(), 6), row.nIndex);
        if (!std::isnan(row.vec[row.nIndex])) {
            EXPECT_EQ(dfValue, double(row.vec[row.nIndex]));
        }
    }
    double dfValue = 0.0;
    int nX = 3, nY = 3;
    const float f = 8.f;
    EXPECT_EQ(FindMaximum(nullptr, 1, 1, &dfValue, &nX, &nY), 0);
    EXPECT_EQ(FindMaximum(&f, 5, 0, &dfValue, &nX, &nY), 1);
    EXPECT_EQ(dfValue + nX + nY, 8.0);
    nX = nY = 3;
    EXPECT_EQ(IndexToXY(-1, 4, 4, &nX, &nY) + IndexToXY(1, -4, 4, &nX, &nY) + IndexToXY(1, 0, 4, &nX, &nY),
              0);
    EXPECT_EQ(nX + nY, 6);
    EXPECT_EQ(IndexToXY(11, 4, 4, &nX, &nY), 1);
    EXPECT_EQ(nX * 10 + nY, 32);
}

// The uniform cubic B-spline keeps constants and slopes, lifts x² by 1/3, and spreads one sample over
// 1/6, 2/3, 1/6.
TEST(ResizeBicubic, HasTheMomentsOfTheCubicBSpline)
{
    const int nWidth = 12, nHeight = 9, nFactor = 5;
    std::vector<float> vecConstant(nWidth * nHeight, 3.7f), vecPolynomial, vecSpike(nWidth * nHeight, 0.f);
    for (int y = 0; y < nHeight; y++)
        for (int x = 0; x < nWidth; x++)
            vecPolynomial.push_back(float(x * x - 2 * y + 0.5 * x * y));
    vecSpike[4 * nWidth + 6] = 36.f;
    const int nW = nWidth * nFactor, nH = nHeight * nFactor;
    std::vector<float> vec(nW * nH);
    ASSERT_EQ(ResizeBicubic(vec.data(), nW, nH, vecConstant.data(), nWidth, nHeight), 1);
    for (float f : vec)
        ASSERT_NEAR(f, 3.7f, 8e-6);
    ResizeBicubic(vec.data(), nW, nH, vecPolynomial.data(), nWidth, nHeight);
    for (int j = nFactor; j < nH - 2 * nFactor; j++)
        for (int i = nFactor; i < nW - 2 * nFactor; i++) {
            const double x = double(i) / nFactor, y = double(j) / nFactor;
            ASSERT_NEAR(vec[j * nW + i], x * x + 1.0 / 3.0 - 2 * y + 0.5 * x * y, 2e-4) << i << " " << j;
        }
    ResizeBicubic(vec.data(), nWidth, nHeight, vecSpike.data(), nWidth, nHeight);
    const double adfSpread[] = {0, 1, 4, 1, 0};
    for (int y = -2; y <= 2; y++)
        for (int x = -2; x <= 2; x++)
            EXPECT_NEAR(vec[(4 + y) * nWidth + 6 + x], adfSpread[x + 2] * adfSpread[y + 2], 1e-4);
    // beyond the edges stand the edge pixels: a step at the first column stays monotonous
    std::vector<float> vecEdge{9.f, 0.f, 0.f};
    ResizeBicubic(vec.data(), 3, 1, vecEdge.data(), 3, 1);
    EXPECT_NEAR(vec[0], 9.f * 5.f / 6.f, 1e-5);
    EXPECT_NEAR(vec[1], 9.f / 6.f, 1e-5);
    EXPECT_EQ(ResizeBicubic(vec.data(), 0, 1, vecEdge.data(), 3, 1), 0);
    EXPECT_EQ(ResizeBicubic(vec.data(), 1, 1, nullptr, 3, 1), 0);
}
