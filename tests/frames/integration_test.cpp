#include "frames/integration.h"

#include "frames/frameseries.h"

#include <gtest/gtest.h>

namespace {

RefIntPara integrated(const CImgObj<float>& img, double dfX, double dfY, int nR, int nB)
{
    std::vector<RefIntPara> vec;
    MakeIntegrationWindows({dfX}, {dfY}, nR, nB, vec);
    IntegratePeaks(img, vec);
    return vec.at(0);
}

TEST(IntegratePeaks, EqualsTheDirectSumToTheLastBit)
{
    std::mt19937 random(3);
    std::normal_distribution<float> noise(1000.f, 300.f);
    const int nW = 70;
    const CImgObj<float> img = makeImage(nW, 66, [&](int, int) { return noise(random); });
    for (const auto& [nR, nB] :
         {std::pair(15, 3), std::pair(2, 1), std::pair(0, 4), std::pair(7, 0), std::pair(0, 0)}) {
        const RefIntPara window = integrated(img, 30, 33, nR, nB);
        float fDisc = 0.f, fRing = 0.f;
        int nDisc = 0, nRing = 0;
        const int nT = nR + nB;
        for (int dx = -nT; dx <= nT; ++dx)
            for (int dy = -nT; dy <= nT; ++dy) {
                const int d2 = dx * dx + dy * dy;
                if (d2 > nT * nT)
                    continue;
                (d2 > nR * nR ? fRing : fDisc) += img.Data()[(33 + dy) * nW + 30 + dx];
                ++(d2 > nR * nR ? nRing : nDisc);
            }
        EXPECT_EQ(window.nPeakCount, nDisc);
        EXPECT_EQ(window.nBackgroundCount, nRing);
        EXPECT_EQ(window.fPeakSum, fDisc);
        EXPECT_EQ(window.fBackgroundSum, fRing);
        const double dfRing = nB > 0 ? double(fRing) / nRing * nDisc : 0.0;  // no ring, no background
        EXPECT_EQ(window.fIntensity, float(double(fDisc) - dfRing)) << nR << " " << nB;
    }
}

TEST(IntegratePeaks, FindsASpotOnlyWhereTheWindowFits)
{
    const int nW = 90, nH = 80;  // 18 pixels of room are needed
    const struct {
        int nX, nY;
        bool bFits;
    } aRow[] = {{18, 40, true},       {17, 40, false},      {nW - 19, 40, true},
                {nW - 18, 40, false}, {40, 18, true},       {40, 17, false},
                {40, nH - 19, true},  {40, nH - 18, false}, {40, 2000000000, false}};
    for (const auto& row : aRow) {
        const CImgObj<float> img = makeImage(
            nW, nH, [&](int x, int y) { return x == row.nX && y == row.nY ? 520 : 20; });
        EXPECT_NEAR(integrated(img, row.nX, row.nY, 15, 3).fIntensity, row.bFits ? 500 : 0, 0.01)
            << row.nX << " " << row.nY;
    }
}

TEST(SampleAtPositions, RoundsHalvesAwayFromZeroAndIsWholeOrEmpty)
{
    const CImgObj<float> img = makeImage(6, 4, [](int x, int y) { return 10 * y + x; });
    EXPECT_EQ(SampleAtPositions(img, {1.5, 2.49, 0, -0.4}, {0.5, 2.5, 3, 0}), (QList<double>{12, 32, 30, 0}));
    EXPECT_TRUE(SampleAtPositions(img, {1, -0.5}, {1, 1}).isEmpty());
    EXPECT_TRUE(SampleAtPositions(img, {1}, {std::nan("")}).isEmpty());
}

}  // namespace
