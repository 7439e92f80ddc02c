#include "frames/framehunt.h"
#include "frames/smoothedimage.h"
#include "records/pi.h"
#include "tests/frames/frameseries.h"

namespace tessera {

namespace {

/// Slow and obvious: the sum over all pixels, with distances wrapped around the edges.
double convolved(const CImgObj<float>& img, double dfSigma, int nX, int nY)
{
    const int nW = img.Width(), nH = img.Height();
    if (dfSigma == 0) {
        return double(img.Data()[nY * nW + nX]);
    }
    double dfSum = 0;
    for (int i = 0; i < nW * nH; ++i) {
        const int dx = std::abs(i % nW - nX), dy = std::abs(i / nW - nY);
        dfSum += double(img.Data()[i]) * gaussian(std::min(dx, nW - dx), std::min(dy, nH - dy), dfSigma);
    }
    return dfSum / (2 * g_dfPi * dfSigma * dfSigma);
}

TEST(BandPass, AgreesWithConvolutionInRealSpace)
{
    std::mt19937 random(5);
    std::normal_distribution<float> noise(300.f, 500.f);
    FrameSeries series;  // its filters go through all cases: what no longer fits must be remade
    int nClipped = 0;
    // at odd sides narrow ones only: the table of distances is lopsided at half the side there
    for (const auto& [nW, nH, p] : {std::tuple(24, 18, radii(1.5, 3)),
                                    {24, 18, radii(2, 3)},
                                    {17, 31, radii(1, 1.5, 0.7)},
                                    {31, 17, radii(0, 1.5, 0)}}) {
        const CImgObj<float> img = makeImage(nW, nH, [&](int, int) { return noise(random); });
        CAcmlFft fft;
        FrameSpectrum spectrum;
        CImgObj<COMPLEX> imgWork;
        CImgObj<float> imgBandPass, imgSmooth;
        ASSERT_EQ(frameSpectrum(img, fft, spectrum), 0);
        ASSERT_TRUE(calBandPassImage(spectrum, p, series.filters, fft, imgWork, imgBandPass, &imgSmooth));
        for (int i = 0; i < nW * nH; i += 7) {
            const int x = i % nW, y = i / nW;
            const double dfBand = convolved(img, p.m_dfPeakRadius, x, y) -
                                  convolved(img, p.m_dfBackgroundRadius, x, y);
            EXPECT_NEAR(imgBandPass.Data()[i], dfBand < -100 ? 0 : dfBand, 3e-3) << nW << " " << i;
            EXPECT_NEAR(imgSmooth.Data()[i], convolved(img, p.m_dfSmoothRadius, x, y), 3e-3);
            nClipped += dfBand < -100;
        }
        ASSERT_TRUE(
            outputSmoothedImage(img, p, series.filters, series.dir.filePath("f.01.mrc"), series.report));
        ImageList vecRead;
        ASSERT_EQ(ReadMRC(series.dir.filePath("Nf.mrc"), vecRead), 1);
        EXPECT_TRUE(std::equal(imgSmooth.Data(), imgSmooth.Data() + nW * nH, vecRead.at(0)->Data()));
    }
    EXPECT_GT(nClipped, 10);
}

TEST(HuntFrame, FindsNothingOnConstantFramesNorInNoiseAndOneSpotAmongPixelsWithoutANumber)
{
    CPeakFilters filters;
    FrameHuntWork work;
    PeakHuntingParameters p;
    for (const auto& [nW, nH] :
         {std::pair(64, 64), std::pair(37, 41), std::pair(516, 60), std::pair(1, 300)}) {
        for (double dfThreshold : {-1000.0, 0.0}) {
            p.m_dfPeakThreshold = dfThreshold;
            const CImgObj<float> img = makeImage(nW, nH, [](int, int) { return 12345.678; });
            EXPECT_TRUE(huntFrame(img, p, {}, filters, work).listX.isEmpty()) << nW << " " << nH;
        }
    }
    EXPECT_FALSE(huntFrame(CImgObj<float>(), p, {}, filters, work).bHunted);
    std::mt19937 random(1);
    const CImgObj<float> imgNoise = makeImage(64, 64, [&](int, int) { return random() >> 16; });
    for (double dfThreshold :
         {-100., 32200.}) {  // a maximum in more than 1 % of the pixels; the highest alone
        p = radii(0, 5);
        p.m_dfPeakThreshold = dfThreshold;
        EXPECT_EQ(huntFrame(imgNoise, p, {}, filters, work).listX.size() > 5, dfThreshold > 0);
    }
    CImgObj<float> img = makeImage(96, 80,
                                   [](int x, int y) { return 100 + 900 * gaussian(x - 60, y - 30, 2); });
    img.Data()[5 * 96 + 5] = std::nanf("");
    img.Data()[70 * 96 + 20] = HUGE_VALF;
    img.Data()[70 * 96 + 80] = -3e38f;
    const FramePeaks peaks = huntFrame(img, radii(2, 4), {}, filters, work);
    EXPECT_EQ(peaks.nBadPixels, 3);
    EXPECT_EQ(peaks.listX, QList<double>{60});
    EXPECT_EQ(peaks.listY, QList<double>{30});
}

}  // namespace

}  // namespace tessera
