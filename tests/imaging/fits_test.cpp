// Least-squares fits against certified values, closed forms and errors computed apart.
#include "imaging/lmdiffit.h"
#include "imaging/lorentzcurve.h"
#include "imaging/peakfit2d.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

CImgObj<float> spotOnFrame(const std::vector<double>& p, int nWidth, int nHeight)
{
    CImgObj<float> img;
    img.Create(nWidth, nHeight);
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            img.Data()[y * nWidth + x] = float(
                p[0] / (1 + (x - p[1]) * (x - p[1]) / p[2] + (y - p[3]) * (y - p[3]) / p[4]));
        }
    }
    return img;
}

// NIST StRD Misra1a, y = b1(1 − exp(−b2·x)): volume against pressure.
const struct {
    double y, x;
} g_aMisra1a[] = {{10.07, 77.6},  {14.73, 114.9}, {17.94, 141.1}, {23.93, 190.8}, {29.61, 239.9},
                  {35.18, 289.0}, {40.02, 332.8}, {44.82, 378.4}, {50.76, 434.8}, {55.05, 477.3},
                  {61.01, 536.8}, {66.40, 593.1}, {75.47, 689.1}, {81.78, 760.0}};

int misra1a(void*, int m, int, const double* p, double* pResidual, int nFlag)
{
    for (int i = 0; i < m && nFlag != 0; ++i) {
        pResidual[i] = p[0] * (1 - std::exp(-p[1] * g_aMisra1a[i].x)) - g_aMisra1a[i].y;
    }
    return 0;
}

}  // namespace

TEST(CLmdifFit, ReachesTheCertifiedValuesOfMisra1a)
{
    CLmdifFit fit;
    std::vector<double> vecPara{500.0, 0.0001};
    const int nInfo = fit.Run(misra1a, 14, vecPara);
    EXPECT_GE(nInfo, 1) << nInfo;
    EXPECT_LE(nInfo, 4) << nInfo;
    EXPECT_NEAR(vecPara[0], 2.3894212918e+02, 1e-4);
    EXPECT_NEAR(vecPara[1], 5.5015643181e-04, 1e-9);
    EXPECT_NEAR(fit.StdErr()[0], 2.7070075241e+00, 1e-3);
    EXPECT_NEAR(fit.StdErr()[1], 7.2668688436e-06, 1e-9);
    ASSERT_EQ(fit.Covariance().size(), 4u);
    EXPECT_NEAR(std::sqrt(fit.Covariance()[3]), fit.StdErr()[1], 1e-15);
    EXPECT_LT(fit.Covariance()[1], 0.0) << "a larger plateau goes with a slower rise";
    fit.Run(misra1a, 2, vecPara);  // two points, two parameters: the curve goes through
    EXPECT_NEAR(vecPara[0] * (1 - std::exp(-vecPara[1] * 77.6)), 10.07, 1e-6);
    EXPECT_EQ(fit.StdErr(), std::vector<double>(2, double(INFINITY)));
}

TEST(FitPeak2D, FindsPureLorentziansWhereverTheBoxLies)
{
    const struct {
        double dfX, dfY, dfStartX, dfStartY;
        int nHalfSize;
        double dfSaturation;
        int nLeft, nTop, nRight, nBottom;
    } aRow[] = {{30.3, 25.7, 31, 25, 10, 1e9, 21, 15, 41, 35},     // inside
                {30.3, 25.7, 30.7, 25.6, 8, 1e9, 22, 17, 38, 33},  // a box of truncated edges
                {2.6, 47.2, 3, 47, 10, 1e9, 0, 37, 13, 49},        // cut off at two edges
                {-1.5, 20.4, -3.0, 21, 12, 1e9, 0, 9, 9, 33},      // starts outside: height 1
                {30.3, 25.7, 29, 27, 15, 600, 14, 12, 44, 42}};    // the core is saturated
    for (const auto& row : aRow) {
        SCOPED_TRACE(row.dfStartX);
        auto img = spotOnFrame({1000.0, row.dfX, 6.0, row.dfY, 11.0}, 60, 50);
        for (int i = 0; i < 60 * 50; ++i) {
            const int c = i % 60, r = i / 60;
            const bool bInBox = c >= row.nLeft && c <= row.nRight && r >= row.nTop && r <= row.nBottom;
            // The detector gives no more than its limit; what lies beyond the box must not matter.
            img.Data()[i] = bInBox ? std::min(img.Data()[i], float(row.dfSaturation)) : 5000.f;
        }
        double x = row.dfStartX, y = row.dfStartY;
        const auto vec = FitPeak2D(img, x, y, row.nHalfSize, row.dfSaturation);
        ASSERT_EQ(vec.size(), 11u);
        const double aExpected[] = {1000.0, row.dfX - row.nLeft, 6.0, row.dfY - row.nTop, 11.0};
        for (std::size_t k = 0; k < 5; ++k) {
            EXPECT_NEAR(vec[k], aExpected[k], 1e-5 * aExpected[0]) << k;
        }
        EXPECT_LT(std::abs(x - row.dfX), 1e-5) << x << " " << y;
        EXPECT_LT(std::abs(y - row.dfY), 1e-5) << x << " " << y;
        EXPECT_GE(vec[10], 1) << vec[10];
        EXPECT_LE(vec[10], 4) << vec[10];
        EXPECT_LT(vec[6], 1e-5) << vec[10];
    }
}

TEST(FitPeak2D, LeavesThePositionWhenThereIsNoBox)
{
    const auto img = spotOnFrame({10, 5, 2, 5, 2}, 12, 12);
    std::vector<double> vecX{5, -90, NAN}, vecY{6, 3, 6};
    const auto vecFit = FitPeakList(img, vecX, vecY, 4, 1e9);
    EXPECT_NEAR(vecY[0], 5.0, 1e-5);
    EXPECT_EQ(vecFit.at(1), std::vector<double>(11, -1.0));
    EXPECT_EQ(vecFit.at(2)[10], -1.0);
    EXPECT_EQ(vecX[1], -90);
    EXPECT_EQ(vecY[1], 3);
    EXPECT_EQ(vecY[2], 6);
}

TEST(LorentzCurve, GoesThroughItsOwnPointsAndDataStopOneStepShortOfTheRange)
{
    const auto vec = calcFittedCurveData(8.0, 15.0, 2.0, QPointF(10, 20));
    ASSERT_EQ(vec.size(), 1000);
    EXPECT_EQ(vec.first().x(), 10.0);
    EXPECT_NEAR(vec.last().x(), 19.99, 1e-12);
    EXPECT_EQ(vec[500], QPointF(15.0, 8.0));
    EXPECT_NEAR(vec[700].y(), 4.0, 1e-12) << "half the height at the half width";
    for (const QList<QPointF>& list :
         {vec.mid(400, 300).toList(), QList<QPointF>{vec[450], vec[560], vec[700]}}) {
        double p[3] = {7.0, 14.5, 1.0}, adfErr[3];
        const int nInfo = fitLorentzCurve(list, p, adfErr);
        EXPECT_GE(nInfo, 1) << nInfo;
        EXPECT_LE(nInfo, 4) << nInfo;
        EXPECT_NEAR(p[0], 8.0, 1e-6);
        EXPECT_NEAR(p[1], 15.0, 1e-6);
        EXPECT_NEAR(std::abs(p[2]), 2.0, 1e-6);
        EXPECT_EQ(std::isinf(adfErr[1]), list.size() == 3) << "three points leave nothing for an error";
    }
}

}  // namespace tessera
