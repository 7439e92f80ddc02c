#include "frames/bandpass.h"

#include "frames/framehunt.h"
#include "frames/frameseries.h"
#include "frames/smoothedimage.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

PeakHuntingParameters radii(double dfPeak, double dfBackground, double dfSmooth)
{
    PeakHuntingParameters p;
    p.m_dfPeakRadius = dfPeak;
    p.m_dfBackgroundRadius = dfBackground;
    p.m_dfSmoothRadius = dfSmooth;
    return p;
}

/// Slow and obvious: the sum over all pixels, with distances wrapped around the edges.
double convolved(const CImgObj<float>& img, double dfSigma, int nX, int nY)
{
    const int nW = img.Width(), nH = img.Height();
    double dfSum = 0;
    for (int y = 0; y < nH; ++y)
        for (int x = 0; x < nW; ++x) {
            const int dx = std::min(std::abs(x - nX), nW - std::abs(x - nX));
            const int dy = std::min(std::abs(y - nY), nH - std::abs(y - nY));
            dfSum += double(img.Data()[y * nW + x]) * (dfSigma > 0 ? gaussian(dx, dy, dfSigma) / (2 * M_PI * dfSigma * dfSigma)
                                                                   : dx == 0 && dy == 0);
        }
    return dfSum;
}

TEST(BandPass, AgreesWithConvolutionInRealSpace)
{
    std::mt19937 random(5);
    std::normal_distribution<float> noise(300.f, 50.f);
    CPeakFilters filters;  // goes through all cases: what no longer fits must be remade
    // at odd sides narrow ones only: the table of distances is lopsided at half the side there
    const struct {
        int nW, nH;
        PeakHuntingParameters p;
    } aRow[] = {{24, 18, radii(1.5, 3, 0.5)}, {24, 18, radii(2, 3, 0.5)}, {24, 18, radii(2, 4, 1)},
                {17, 31, radii(1, 1.5, 0.7)}, {24, 18, radii(0, 3, 0)}, {31, 17, radii(0, 1.5, 0)}};
    for (const auto& row : aRow) {
        const CImgObj<float> img = makeImage(row.nW, row.nH, [&](int, int) { return noise(random); });
        CAcmlFft fft;
        CImgObj<COMPLEX> imgSpectrum, imgWork;
        CImgObj<float> imgBandPass, imgSmooth;
        ASSERT_EQ(frameSpectrum(img, fft, imgSpectrum), 0);
        ASSERT_TRUE(calBandPassImage(imgSpectrum, row.p, filters, fft, imgWork, imgBandPass, &imgSmooth));
        for (int i = 0; i < row.nW * row.nH; i += 7) {
            const int x = i % row.nW, y = i / row.nW;
            const double dfBand = convolved(img, row.p.m_dfPeakRadius, x, y) - convolved(img, row.p.m_dfBackgroundRadius, x, y);
            EXPECT_NEAR(imgBandPass.Data()[i], dfBand < -100 ? 0 : dfBand, 2e-3) << row.nW << " " << i;
            EXPECT_NEAR(imgSmooth.Data()[i], convolved(img, row.p.m_dfSmoothRadius, x, y), 2e-3);
        }
    }
}

TEST(BandPass, ValuesBelowMinusHundredBecomeZero)
{
    const CImgObj<float> img = makeImage(32, 32, [](int x, int y) { return x == 16 && y == 16 ? -30000 : 0; });
    CAcmlFft fft;
    CPeakFilters filters;
    CImgObj<COMPLEX> imgSpectrum, imgWork;
    CImgObj<float> imgClipped, imgWhole;
    frameSpectrum(img, fft, imgSpectrum);
    ASSERT_TRUE(calBandPassImage(imgSpectrum, radii(2, 5, 0.5), filters, fft, imgWork, imgClipped));
    ASSERT_TRUE(filterSpectrum(imgSpectrum, filters, fft, imgWork, nullptr, &imgWhole));
    int nClipped = 0;
    for (int i = 0; i < 32 * 32; ++i) {
        const bool bBelow = imgWhole.Data()[i] < -100.f;
        nClipped += bBelow;
        EXPECT_EQ(imgClipped.Data()[i], bBelow ? 0.f : imgWhole.Data()[i]);
    }
    EXPECT_GT(nClipped, 4);
}

TEST(HuntFrame, FindsNothingOnConstantFramesOfAnySizeAtAnyThreshold)
{
    CPeakFilters filters;
    FrameHuntWork work;
    for (const auto& [nW, nH] : {std::pair(64, 64), std::pair(37, 41), std::pair(516, 60), std::pair(2, 2), std::pair(1, 300)})
        for (double dfThreshold : {-1000.0, 0.0, 1.0}) {
            PeakHuntingParameters p;
            p.m_dfPeakThreshold = dfThreshold;
            const float fLevel = 12345.678f;
            const FramePeaks peaks = huntFrame(makeImage(nW, nH, [&](int, int) { return fLevel; }), p, {}, filters, work);
            EXPECT_TRUE(peaks.listX.isEmpty()) << nW << " " << nH << " " << dfThreshold;
        }
    EXPECT_TRUE(huntFrame(CImgObj<float>(), {}, {}, filters, work).listX.isEmpty());
}

TEST(HuntFrame, PixelsWithoutANumberSpoilOnlyThemselves)
{
    const float fInf = std::numeric_limits<float>::infinity();
    PeakHuntingParameters p = radii(2, 4, 0.5);
    p.m_dfIntegrationRadius = 6;
    CPeakFilters filters;
    FrameHuntWork work;
    CImgObj<float> img = makeImage(96, 80, [](int x, int y) { return 100 + 900 * gaussian(x - 60, y - 30, 2); });
    img.Data()[5 * 96 + 5] = std::nanf("");
    img.Data()[70 * 96 + 20] = fInf;
    img.Data()[70 * 96 + 80] = -3e38f;
    const FramePeaks peaks = huntFrame(img, p, {}, filters, work);
    EXPECT_EQ(peaks.nBadPixels, 3);
    ASSERT_EQ(peaks.listX, QList<double>{60});
    EXPECT_EQ(peaks.listY, QList<double>{30});
    EXPECT_NEAR(peaks.listI2D[0], 900 * 2 * M_PI * 4, 0.04 * 900 * 2 * M_PI * 4);  // smoothing scale 1.03

    const FramePeaks none = huntFrame(makeImage(40, 40, [](int, int) { return std::nan(""); }), p, {}, filters, work);
    EXPECT_EQ(none.nBadPixels, 1600);
    EXPECT_TRUE(none.listX.isEmpty());
}

TEST(OutputSmoothedImage, WritesTheSmoothedFrameBesideTheGivenName)
{
    QTemporaryDir dir;
    RecordingReport report;
    CPeakFilters filters;
    const CImgObj<float> img = makeImage(20, 12, [](int x, int y) { return (x * 7 + y * 13) % 11; });
    ASSERT_TRUE(outputSmoothedImage(img, radii(2, 4, 0.5), filters, dir.filePath("frame.0001.mrc"), report));
    ImageList vecRead;
    ASSERT_EQ(ReadMRC(dir.filePath("Nframe.mrc"), vecRead), 1);
    ASSERT_EQ(vecRead.size(), 1u);
    EXPECT_NEAR(vecRead[0]->Data()[3 * 20 + 4], convolved(img, 0.5, 4, 3), 1e-4);
    EXPECT_FALSE(outputSmoothedImage(img, {}, filters, dir.filePath("none/frame.mrc"), report));
    EXPECT_FALSE(outputSmoothedImage({}, {}, filters, dir.filePath("frame.mrc"), report));
    EXPECT_EQ(report.listLine.size(), 2);
}

}  // namespace
