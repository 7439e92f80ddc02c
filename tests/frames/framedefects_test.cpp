#include "frames/framedefects.h"
#include "frames/framehunt.h"
#include "frames/peakmask.h"
#include "records/pi.h"
#include "tests/frames/frameseries.h"

#include <limits>

namespace tessera {

namespace {

const int g_nWidth = 300, g_nHeight = 280;

/// A frame without defects: counts on a background that decreases from the beam, an ice ring, reflections
/// that move, and one that stays for most of the series.
CImgObj<float> soundFrame(int nFrame)
{
    std::mt19937 random(unsigned(nFrame) + 1);
    return makeImage(g_nWidth, g_nHeight, [&](int x, int y) {
        const double dfR = std::hypot(x - 148, y - 137);
        double df = 8 + 40 / (1 + std::pow(dfR / 30, 2)) + 20000 * gaussian(dfR, 0, 3) +
                    60 * gaussian(dfR - 90, 0, 2);
        df += 3000 * gaussian(x - 20 - 25 * nFrame, y - 30 - 22 * nFrame, 1.5);
        df += nFrame < 8 ? 3000 * gaussian(x - 210, y - 60, 1.2) : 0;
        return double(std::poisson_distribution<int>(df)(random));
    });
}

FrameDefects defectsOfSeries(const std::function<void(CImgObj<float>&)>& fnSpoil, int nFrames = 10)
{
    std::vector<FrameSigns> vecFrame;
    for (int n = 0; n < nFrames; ++n) {
        CImgObj<float> img = soundFrame(n);
        fnSpoil(img);
        vecFrame.push_back(signsOfFrame(img));
    }
    return defectsOf(vecFrame);
}

bool isMasked(const FrameDefects& defects, double dfX, double dfY)
{
    QList<double> listX = {dfX}, listY = {dfY};
    removeMaskedPeaks(maskOfDefects(defects), listX, listY);
    return listX.isEmpty();
}

float& at(CImgObj<float>& img, int x, int y)
{
    return img.Data()[y * img.Width() + x];
}

TEST(FrameDefects, OfSoundFramesThereAreNone)
{
    for (const double dfScale : {1.0, 0.001}) {  // counts, and values such as 0 to 1
        const FrameDefects defects = defectsOfSeries([&](CImgObj<float>& img) {
            for (int i = 0; i < g_nWidth * g_nHeight; ++i) {
                img.Data()[i] *= float(dfScale);
            }
        });
        EXPECT_TRUE(maskOfDefects(defects).listPolygon.isEmpty())
            << tellDefects(defects).join('\n').toStdString();
        EXPECT_TRUE(tellDefects(defects).isEmpty());
    }
}

TEST(FrameDefects, DeadCopiedAndInterpolatedLinesAreFound)
{
    const FrameDefects defects = defectsOfSeries([](CImgObj<float>& img) {
        for (int y = 0; y < g_nHeight; ++y) {
            at(img, 50, y) = at(img, 51, y) = at(img, 52, y);  // a wide pixel that was shared out
            at(img, 200, y) = 7;
        }
        for (int x = 0; x < g_nWidth; ++x) {  // straight from row 99 to row 103, in whole numbers
            for (int y = 100; y < 103; ++y) {
                at(img, x,
                   y) = std::round(at(img, x, 99) + (at(img, x, 103) - at(img, x, 99)) * float(y - 99) / 4);
            }
        }
    });
    ASSERT_EQ(defects.vecColumn.size(), 2u);
    EXPECT_EQ(defects.vecColumn[0].nFirst, 50);
    EXPECT_EQ(defects.vecColumn[0].nLast, 52);
    EXPECT_EQ(defects.vecColumn[1].nFirst, 200);
    EXPECT_EQ(defects.vecColumn[1].nLast, 200);
    ASSERT_EQ(defects.vecRow.size(), 1u);
    EXPECT_EQ(defects.vecRow[0].nFirst, 100);
    EXPECT_EQ(defects.vecRow[0].nLast, 102);
    for (const auto& [x, y, bMasked] : {std::tuple(51, 5, true),
                                        {200, 279, true},
                                        {0, 101, true},
                                        {49, 5, false},
                                        {53, 5, false},
                                        {201, 5, false},
                                        {9, 103, false}}) {
        EXPECT_EQ(isMasked(defects, x, y), bMasked) << x << ' ' << y;
    }
    EXPECT_EQ(tellDefects(defects).size(), 2);
}

TEST(FrameDefects, DarkAndBrightBordersAreFound)
{
    const FrameDefects defects = defectsOfSeries([](CImgObj<float>& img) {
        for (int y = 0; y < g_nHeight; ++y) {
            at(img, 0, y) *= 3;
        }
        for (int x = 0; x < g_nWidth; ++x) {
            at(img, x, g_nHeight - 1) = at(img, x, g_nHeight - 2) = 0;
        }
    });
    EXPECT_EQ(defects.anBorder, (std::array<int, 4>{1, 0, 0, 2}));
    EXPECT_TRUE(isMasked(defects, 0, 100));
    EXPECT_TRUE(isMasked(defects, 100, g_nHeight - 2));
    EXPECT_FALSE(isMasked(defects, 1, 100));
    EXPECT_FALSE(isMasked(defects, 100, g_nHeight - 3));
    EXPECT_FALSE(isMasked(defects, 100, 0));
}

TEST(FrameDefects, ApertureAndBeamStopAreFound)
{
    const double dfRadius = 120;
    const FrameDefects aperture = defectsOfSeries([&](CImgObj<float>& img) {
        for (int y = 0; y < g_nHeight; ++y) {
            for (int x = 0; x < g_nWidth; ++x) {
                at(img, x, y) = std::hypot(x - 150, y - 140) > dfRadius ? float((x * 7 + y) % 2)
                                                                        : at(img, x, y);
            }
        }
    });
    for (int nDegrees = 0; nDegrees < 360; nDegrees += 15) {
        const double dfCos = std::cos(nDegrees * g_dfPi / 180), dfSin = std::sin(nDegrees * g_dfPi / 180);
        const auto masked = [&](double df) { return isMasked(aperture, 150 + df * dfCos, 140 + df * dfSin); };
        EXPECT_TRUE(masked(dfRadius + 3)) << nDegrees;
        EXPECT_TRUE(masked(dfRadius + 15)) << nDegrees;
        EXPECT_FALSE(masked(dfRadius - 13)) << nDegrees;
        EXPECT_FALSE(masked(0)) << nDegrees;
        EXPECT_FALSE(masked(90)) << nDegrees;
    }
    const FrameDefects stop = defectsOfSeries([](CImgObj<float>& img) {
        for (int y = 0; y < 145; ++y) {
            for (int x = 139; x < 157; ++x) {
                at(img, x, y) = 0;
            }
        }
    });
    EXPECT_TRUE(isMasked(stop, 148, 40));
    EXPECT_TRUE(isMasked(stop, 148, 130));
    EXPECT_FALSE(isMasked(stop, 128, 40));
    EXPECT_FALSE(isMasked(stop, 170, 40));
    EXPECT_FALSE(isMasked(stop, 148, 160));
}

TEST(FrameDefects, AnEdgeOppositeAShadowIsLeftOutWhereTheTransformMakesPeaksOfIt)
{
    // An aperture that reaches the lower edge alone; on it no spots, but a light that ends with the frame.
    const auto spoil = [](CImgObj<float>& img) {
        for (int y = 0; y < g_nHeight; ++y) {
            for (int x = 0; x < g_nWidth; ++x) {
                at(img, x, y) = std::hypot(x - 150, y - 190) > 145 ? 0 : 100 + at(img, x, y);
            }
        }
    };
    const FrameDefects defects = defectsOfSeries(spoil);
    ASSERT_EQ(defects.listWrapped.size(), 1);
    EXPECT_TRUE(isMasked(defects, 150, g_nHeight - 1));
    EXPECT_TRUE(isMasked(defects, 150, g_nHeight - 2));
    EXPECT_FALSE(isMasked(defects, 150, g_nHeight - 3));
    EXPECT_FALSE(isMasked(defects, 150, g_nHeight - 10));
    CImgObj<float> img = soundFrame(9);
    spoil(img);
    PeakHuntingParameters parameters = radii(1.2, 3.2);
    parameters.m_dfPeakThreshold = 15;
    CPeakFilters filters;
    FrameHuntWork work;
    const auto peaksInLine = [&](int nY, const MaskData& mask) {
        const FramePeaks peaks = huntFrame(img, parameters, mask, filters, work);
        return peaks.listY.count(nY);
    };
    EXPECT_GT(peaksInLine(g_nHeight - 2, {}), 10);
    EXPECT_EQ(peaksInLine(g_nHeight - 2, maskOfDefects(defects)), 0);
}

TEST(FrameDefects, HotPixelsAreThoseOfAllFrames)
{
    const FrameDefects defects = defectsOfSeries([](CImgObj<float>& img) {
        at(img, 33, 44) = 900;
        at(img, 250, 12) += 300;
    });
    EXPECT_EQ(defects.listHotPixel, QList<QPoint>({{250, 12}, {33, 44}}));
    EXPECT_TRUE(maskOfDefects(defects).listPolygon.isEmpty());
    EXPECT_TRUE(
        defectsOfSeries([](CImgObj<float>& img) { at(img, 33, 44) = 900; }, 1).listHotPixel.isEmpty());
}

TEST(FrameDefects, FramesThatSayNothingHaveNone)
{
    const double dfNaN = std::numeric_limits<double>::quiet_NaN();
    const PixelFunction aBlank[] = {[](int, int) { return 0; }, [](int, int) { return 65535; },
                                    [&](int, int) { return dfNaN; },
                                    [](int x, int y) { return (x + y) % 97 == 0; }};
    for (const PixelFunction& fn : aBlank) {
        for (const QSize& size : {QSize(200, 200), QSize(2, 2), QSize(1, 1), QSize(2, 400)}) {
            for (const size_t nFrames : {size_t(1), size_t(6)}) {
                std::vector<FrameSigns> vecFrame;
                for (size_t i = 0; i < nFrames; ++i) {
                    vecFrame.push_back(signsOfFrame(makeImage(size.width(), size.height(), fn)));
                }
                EXPECT_TRUE(tellDefects(defectsOf(vecFrame)).isEmpty());
            }
        }
    }
    EXPECT_TRUE(tellDefects(defectsOf({})).isEmpty());
}

}  // namespace

}  // namespace tessera
