// Least-squares fits against certified values, closed forms and a computation of the errors apart.
#include "imaging/lmdiffit.h"
#include "imaging/lorentzcurve.h"
#include "imaging/peakfit2d.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <thread>

namespace {

double lorentz2D(const std::vector<double>& p, double x, double y)
{
    return p[0] / (1 + (x - p[1]) * (x - p[1]) / p[2] + (y - p[3]) * (y - p[3]) / p[4]);
}

// Noise of a fixed seed, the same on every machine: the sum of twelve uniform numbers less six.
class Noise {
public:
    double operator()()
    {
        double df = -6.0;
        for (int i = 0; i < 12; i++)
            df += m_engine() / 4294967296.0;
        return df;
    }

private:
    std::mt19937 m_engine{4};
};

CImgObj<float> spotOnFrame(const std::vector<double>& p, int nWidth, int nHeight, double dfNoise = 0.0)
{
    Noise noise;
    CImgObj<float> img;
    img.Create(nWidth, nHeight);
    for (int y = 0; y < nHeight; y++)
        for (int x = 0; x < nWidth; x++)
            img.Data()[y * nWidth + x] = float(lorentz2D(p, x, y) + dfNoise * noise());
    return img;
}

// NIST StRD Misra1a, y = b1(1 − exp(−b2·x)): volume against pressure.
const struct {
    double y, x;
} aMisra1a[] = {{10.07, 77.6},  {14.73, 114.9}, {17.94, 141.1}, {23.93, 190.8}, {29.61, 239.9},
                {35.18, 289.0}, {40.02, 332.8}, {44.82, 378.4}, {50.76, 434.8}, {55.05, 477.3},
                {61.01, 536.8}, {66.40, 593.1}, {75.47, 689.1}, {81.78, 760.0}};

int misra1a(void*, int m, int, const double* p, double* pResidual, int nFlag)
{
    for (int i = 0; i < m && nFlag != 0; i++)
        pResidual[i] = p[0] * (1 - std::exp(-p[1] * aMisra1a[i].x)) - aMisra1a[i].y;
    return 0;
}

}  // namespace

TEST(CLmdifFit, ReachesTheCertifiedValuesOfMisra1a)
{
    CLmdifFit fit;
    std::vector<double> vecPara{500.0, 0.0001};
    const int nInfo = fit.Run(misra1a, 14, vecPara);
    EXPECT_TRUE(nInfo >= 1 && nInfo <= 4) << nInfo;
    EXPECT_NEAR(vecPara[0], 2.3894212918e+02, 1e-4);
    EXPECT_NEAR(vecPara[1], 5.5015643181e-04, 1e-9);
    EXPECT_NEAR(fit.StdErr()[0], 2.7070075241e+00, 1e-3);
    EXPECT_NEAR(fit.StdErr()[1], 7.2668688436e-06, 1e-9);
    ASSERT_EQ(fit.Covariance().size(), 4u);
    EXPECT_NEAR(std::sqrt(fit.Covariance()[3]), fit.StdErr()[1], 1e-15);
    EXPECT_NEAR(fit.Covariance()[1], fit.Covariance()[2], 1e-12);
    EXPECT_LT(fit.Covariance()[1], 0.0) << "a larger plateau goes with a slower rise";
}

TEST(CLmdifFit, SaysWhenTheDataCannotTellTheErrors)
{
    const double dfInfinity = std::numeric_limits<double>::infinity();
    CLmdifFit fit;
    std::vector<double> vecPara{250.0, 0.0005};
    const int nInfo = fit.Run(misra1a, 2, vecPara);  // two points, two parameters: the curve goes through
    EXPECT_TRUE(nInfo >= 1 && nInfo <= 4) << nInfo;
    EXPECT_NEAR(vecPara[0] * (1 - std::exp(-vecPara[1] * 77.6)), 10.07, 1e-6);
    EXPECT_EQ(fit.StdErr(), std::vector<double>(2, dfInfinity));
    const auto vecBefore = vecPara;
    EXPECT_EQ(fit.Run(misra1a, 1, vecPara), 0);
    EXPECT_EQ(fit.Run(misra1a, 0, vecPara), 0);
    EXPECT_EQ(vecPara, vecBefore);
    std::vector<double> vecNone;
    EXPECT_EQ(fit.Run(misra1a, 14, vecNone), 0);
}

TEST(FitPeak2D, FindsPureLorentziansWhereverTheBoxLies)
{
    const struct {
        double dfX, dfY, dfStartX, dfStartY;
        int nHalfSize;
        double dfSaturation;
    } aRow[] = {{30.3, 25.7, 31, 25, 10, 1e9},    // inside
                {2.6, 47.2, 3, 47, 10, 1e9},      // box cut off at two edges
                {-1.5, 20.4, -3.0, 21, 12, 1e9},  // starts outside: height 1
                {30.3, 25.7, 29, 27, 15, 600}};   // the core is saturated, the flanks remain
    for (const auto& row : aRow) {
        SCOPED_TRACE(row.dfX);
        const std::vector<double> vecTruth{1000.0, row.dfX, 6.0, row.dfY, 11.0};
        auto img = spotOnFrame(vecTruth, 60, 50);
        for (int i = 0; i < 60 * 50; i++)  // the detector gives no more than its limit
            img.Data()[i] = std::min(img.Data()[i], float(row.dfSaturation));
        double x = row.dfStartX;
        double y = row.dfStartY;
        const auto vec = FitPeak2D(img, x, y, row.nHalfSize, row.dfSaturation);
        ASSERT_EQ(vec.size(), 11u);
        EXPECT_TRUE(vec[10] >= 1 && vec[10] <= 4) << vec[10];
        EXPECT_NEAR(x, row.dfX, 1e-5);
        EXPECT_NEAR(y, row.dfY, 1e-5);
        EXPECT_NEAR(vec[0], 1000.0, 1e-2);
        EXPECT_NEAR(vec[2], 6.0, 1e-4);
        EXPECT_NEAR(vec[4], 11.0, 1e-4);
        EXPECT_NEAR(vec[1], x - std::max(int(row.dfStartX - row.nHalfSize), 0), 1e-12)
            << "relative to the box";
        EXPECT_LT(vec[6], 1e-5);
    }
}

// The standard error of a parameter is the scatter of its values over many noisy frames.
TEST(FitPeak2D, ErrorsAreTheScatterOverNoisyFrames)
{
    const std::vector<double> vecTruth{500.0, 20.4, 4.0, 18.7, 9.0};
    const int nFrames = 400;
    Noise noise;
    std::vector<double> vecSum(5, 0.0), vecSum2(5, 0.0), vecErr2(5, 0.0);
    for (int i = 0; i < nFrames; i++) {
        auto img = spotOnFrame(vecTruth, 40, 40);
        for (int k = 0; k < 1600; k++)
            img.Data()[k] += float(12.0 * noise());
        double x = 20.0, y = 19.0;
        const auto vec = FitPeak2D(img, x, y, 9, 450.0);
        for (std::size_t k = 0; k < 5; k++) {
            const double df = vec[k] - vecTruth[k] +
                              (k == 1   ? 11
                               : k == 3 ? 10
                                        : 0);  // the box begins at (11, 10)
            vecSum[k] += df / nFrames;
            vecSum2[k] += df * df / nFrames;
            vecErr2[k] += vec[5 + k] * vec[5 + k] / nFrames;
        }
    }
    // The square of a scatter from 400 values is good to 7 %, 15 % are two of that. The saturation mask
    // depends on the noise and moves height and widths a little.
    for (std::size_t k : {1, 3}) {
        EXPECT_NEAR((vecSum2[k] - vecSum[k] * vecSum[k]) / vecErr2[k], 1.0, 0.15) << k;
        EXPECT_NEAR(vecSum[k], 0.0, 3 * std::sqrt(vecErr2[k] / nFrames)) << k;
    }
    for (std::size_t k : {0, 2, 4})
        EXPECT_NEAR((vecSum2[k] - vecSum[k] * vecSum[k]) / vecErr2[k], 1.0, 0.3) << k;
}

TEST(FitPeak2D, LeavesThePositionWhenThereIsNoBox)
{
    const auto img = spotOnFrame({10, 5, 2, 5, 2}, 12, 12);
    const double dfNan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double x;
        int nHalfSize;
    } aRow[] = {{-20, 5}, {1e300, 5}, {-1e300, 5}, {dfNan, 5}, {6, -3}, {18, 5}};
    for (const auto& row : aRow) {
        double x = row.x;
        double y = 6.0;
        EXPECT_EQ(FitPeak2D(img, x, y, row.nHalfSize, 1e9), std::vector<double>(11, -1.0)) << row.x;
        EXPECT_TRUE(x == row.x || std::isnan(row.x));
        EXPECT_EQ(y, 6.0);
    }
    double x = 3.0, y = 3.0;
    const CImgObj<float> imgEmpty;
    EXPECT_EQ(FitPeak2D(imgEmpty, x, y, 5, 1e9)[10], -1.0);
    const auto vecOnePixel = FitPeak2D(img, x, y, 0, 1e9);
    EXPECT_EQ(vecOnePixel[10], 0.0) << "one pixel for five parameters is bad input";
    EXPECT_TRUE(std::isinf(vecOnePixel[6]));
    EXPECT_EQ(x, 3.0);
}

TEST(FitPeak2D, PixelsThatAreNoNumberDoNotEnter)
{
    auto img = spotOnFrame({100, 15.2, 4, 14.6, 4}, 30, 30);
    img.Data()[14 * 30 + 17] = std::numeric_limits<float>::quiet_NaN();
    img.Data()[15 * 30 + 15] = std::numeric_limits<float>::infinity();
    img.Data()[12 * 30 + 14] = -std::numeric_limits<float>::infinity();
    double x = 15.0, y = 15.0;
    FitPeak2D(img, x, y, 8, 1e9);
    EXPECT_NEAR(x, 15.2, 1e-5);
    EXPECT_NEAR(y, 14.6, 1e-5);
}

TEST(FitPeakList, FitsEachPositionAndRunsSideBySide)
{
    const auto img = spotOnFrame({100, 15.2, 4, 14.6, 4}, 30, 30, 1.0);
    std::vector<double> vecX{15, 14, -90}, vecY{15, 16, 3};
    const auto vecResult = FitPeakList(img, vecX, vecY, 8, 1e9);
    ASSERT_EQ(vecResult.size(), 3u);
    EXPECT_EQ(vecResult[2], std::vector<double>(11, -1.0));
    EXPECT_EQ(vecX[2], -90.0);
    EXPECT_NEAR(vecX[0], 15.2, 0.2);
    std::vector<double> vecShort{1.0};
    EXPECT_TRUE(FitPeakList(img, vecShort, vecY, 8, 1e9).empty());
    EXPECT_EQ(vecShort[0], 1.0);

    std::vector<std::vector<double>> vecParallel(6);
    std::vector<std::thread> vecThread;
    for (std::size_t i = 0; i < 6; i++)
        vecThread.emplace_back([&, i] {
            double x = i % 2 ? 14 : 15;
            double y = i % 2 ? 16 : 15;
            vecParallel[i] = FitPeak2D(img, x, y, 8, 1e9);
        });
    for (auto& thread : vecThread)
        thread.join();
    for (std::size_t i = 0; i < 6; i++)
        EXPECT_EQ(vecParallel[i], vecResult[i % 2]);
}

TEST(LorentzCurve, FitsTheCurveAndSaysWhenItsErrorsAreUnknown)
{
    QList<QPointF> listPoint;
    for (int f = 8; f <= 20; f++)
        listPoint.append(QPointF(f, 250.0 / ((f - 13.4) * (f - 13.4) / (1.7 * 1.7) + 1)));
    for (int nPoints : {13, 4, 3, 2, 0}) {
        double adfPara[3] = {200.0, 13.0, 1.0};
        double adfErr[3] = {-1.0, -1.0, -1.0};
        const int nInfo = fitLorentzCurve(listPoint.mid(nPoints == 13 ? 0 : 4, nPoints), adfPara, adfErr);
        const bool bFitted = nPoints >= 3;
        EXPECT_TRUE(bFitted ? nInfo >= 1 && nInfo <= 4 : nInfo == 0) << nPoints << " gives " << nInfo;
        EXPECT_NEAR(adfPara[0], bFitted ? 250.0 : 200.0, 1e-4);
        EXPECT_NEAR(adfPara[1], bFitted ? 13.4 : 13.0, 1e-6);
        EXPECT_NEAR(std::abs(adfPara[2]), bFitted ? 1.7 : 1.0, 1e-6);
        for (double df : adfErr)
            EXPECT_TRUE(nPoints > 3 ? df >= 0.0 && df < 1e-3 : std::isinf(df)) << nPoints << " gives " << df;
    }
}

TEST(LorentzCurve, DataStopOneStepShortOfTheRange)
{
    const auto vec = calcFittedCurveData(8.0, 15.0, 2.0, QPointF(10, 20));
    ASSERT_EQ(vec.size(), 1000);
    EXPECT_EQ(vec.first().x(), 10.0);
    EXPECT_NEAR(vec.last().x(), 19.99, 1e-12);
    EXPECT_EQ(vec[500], QPointF(15.0, 8.0));
    EXPECT_NEAR(vec[700].y(), 4.0, 1e-12) << "half the height at the half width";
}
