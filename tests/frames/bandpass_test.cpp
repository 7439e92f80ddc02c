#include "frames/framehunt.h"
#include "frames/frameseries.h"
#include "frames/smoothedimage.h"

#include <gtest/gtest.h>

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
    if (dfSigma == 0)
        return double(img.Data()[nY * nW + nX]);
    double dfSum = 0;
    for (int i = 0; i < nW * nH; ++i) {
        const int dx = std::abs(i % nW - nX), dy = std::abs(i / nW - nY);
        dfSum += double(img.Data()[i]) * gaussian(std::min(dx, nW - dx), std::min(dy, nH - dy), dfSigma);
    }
    return dfSum / (2 * M_PI * dfSigma * dfSigma);
}

TEST(BandPass, AgreesWithConvolutionInRealSpace)
{
    std::mt19937 random(5);
    std::normal_distribution<float> noise(300.f, 500.f);
    CPeakFilters filters;  // goes through all cases: what no longer fits must be remade
    int nClipped = 0;
    // at odd sides narrow ones only: the table of distances is lopsided at half the side there
    const struct {
        int nW, nH;
        PeakHuntingParameters p;
    } aRow[] = {{24, 18, radii(1.5, 3, 0.5)},
                {24, 18, radii(2, 3, 0.5)},
                {17, 31, radii(1, 1.5, 0.7)},
                {31, 17, radii(0, 1.5, 0)}};
    for (const auto& row : aRow) {
        const CImgObj<float> img = makeImage(row.nW, row.nH, [&](int, int) { return noise(random); });
        CAcmlFft fft;
        CImgObj<COMPLEX> imgSpectrum, imgWork;
        CImgObj<float> imgBandPass, imgSmooth;
        ASSERT_EQ(frameSpectrum(img, fft, imgSpectrum), 0);
        ASSERT_TRUE(calBandPassImage(imgSpectrum, row.p, filters, fft, imgWork, imgBandPass, &imgSmooth));
        for (int i = 0; i < row.nW * row.nH; i += 7) {
            const int x = i % row.nW, y = i / row.nW;
            const double dfBand = convolved(img, row.p.m_dfPeakRadius, x, y) -
                                  convolved(img, row.p.m_dfBackgroundRadius, x, y);
            EXPECT_NEAR(imgBandPass.Data()[i], dfBand < -100 ? 0 : dfBand, 3e-3) << row.nW << " " << i;
            EXPECT_NEAR(imgSmooth.Data()[i], convolved(img, row.p.m_dfSmoothRadius, x, y), 3e-3);
            nClipped += dfBand < -100;
        }
    }
    EXPECT_GT(nClipped, 10);
}

TEST(HuntFrame, FindsNothingOnConstantFramesOfAnySizeAtAnyThreshold)
{
    CPeakFilters filters;
    FrameHuntWork work;
    PeakHuntingParameters p;
    for (const auto& [nW, nH] : {std::pair(64, 64), std::pair(37, 41), std::pair(516, 60), std::pair(1, 300)})
        for (double dfThreshold : {-1000.0, 0.0}) {
            p.m_dfPeakThreshold = dfThreshold;
            const CImgObj<float> img = makeImage(nW, nH, [](int, int) { return 12345.678; });
            EXPECT_TRUE(huntFrame(img, p, {}, filters, work).listX.isEmpty()) << nW << " " << nH;
        }
    EXPECT_TRUE(huntFrame(CImgObj<float>(), p, {}, filters, work).listX.isEmpty());
}

TEST(HuntFrame, PixelsWithoutANumberSpoilOnlyThemselves)
{
    CPeakFilters filters;
    FrameHuntWork work;
    CImgObj<float> img = makeImage(96, 80,
                                   [](int x, int y) { return 100 + 900 * gaussian(x - 60, y - 30, 2); });
    img.Data()[5 * 96 + 5] = std::nanf("");
    img.Data()[70 * 96 + 20] = HUGE_VALF;
    img.Data()[70 * 96 + 80] = -3e38f;
    const FramePeaks peaks = huntFrame(img, radii(2, 4, 0.5), {}, filters, work);
    EXPECT_EQ(peaks.nBadPixels, 3);
    EXPECT_EQ(peaks.listX, QList<double>{60});
    EXPECT_EQ(peaks.listY, QList<double>{30});
}

TEST(OutputSmoothedImage, WritesTheSmoothedFrameBesideTheGivenName)
{
    QTemporaryDir dir;
    CRecordingReport report;
    CPeakFilters filters;
    const CImgObj<float> img = makeImage(20, 12, [](int x, int y) { return (x * 7 + y * 13) % 11; });
    ASSERT_TRUE(outputSmoothedImage(img, radii(2, 4, 0.5), filters, dir.filePath("frame.0001.mrc"), report));
    ImageList vecRead;
    ASSERT_EQ(ReadMRC(dir.filePath("Nframe.mrc"), vecRead), 1);
    EXPECT_NEAR(vecRead.at(0)->Data()[3 * 20 + 4], convolved(img, 0.5, 4, 3), 1e-4);
}

}  // namespace
