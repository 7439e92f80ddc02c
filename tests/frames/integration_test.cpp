#include "frames/integration.h"

#include "tests/frames/frameseries.h"

#include <QRect>

namespace tessera {

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
    for (const auto& [nR, nB] : {std::pair(15, 3), {2, 1}, {0, 4}, {7, 0}, {0, 0}}) {
        const RefIntPara window = integrated(img, 30, 33, nR, nB);
        float afSum[2] = {0.f, 0.f};  // disc and ring
        int anCount[2] = {0, 0};
        const int nT = nR + nB;
        for (int dx = -nT; dx <= nT; ++dx) {
            for (int dy = -nT; dy <= nT; ++dy) {
                const int d2 = dx * dx + dy * dy, nRing = d2 > nR * nR;
                if (d2 <= nT * nT) {
                    afSum[nRing] += img.Data()[(33 + dy) * nW + 30 + dx];
                    ++anCount[nRing];
                }
            }
        }
        EXPECT_EQ(window.nPeakCount, anCount[0]);
        EXPECT_EQ(window.nBackgroundCount, anCount[1]);
        EXPECT_EQ(window.fPeakSum, afSum[0]);
        EXPECT_EQ(window.fBackgroundSum, afSum[1]);
        const double dfRing = nB > 0 ? double(afSum[1]) / anCount[1] * anCount[0]
                                     : 0.0;  // no ring, no background
        EXPECT_EQ(window.fIntensity, float(double(afSum[0]) - dfRing)) << nR << " " << nB;
    }
}

TEST(IntegratePeaks, FindsASpotOnlyWhereTheWindowFits)
{
    const int nW = 90, nH = 80;  // 18 pixels of room are needed
    for (const QPoint& pt : {QPoint(18, 18), QPoint(17, 18), QPoint(18, 17), QPoint(nW - 19, nH - 19),
                             QPoint(nW - 18, nH - 19), QPoint(nW - 19, nH - 18)}) {
        const bool bFits = QRect(18, 18, nW - 36, nH - 36).contains(pt);
        const CImgObj<float> img = makeImage(nW, nH,
                                             [&](int x, int y) { return QPoint(x, y) == pt ? 520 : 20; });
        EXPECT_NEAR(integrated(img, pt.x(), pt.y(), 15, 3).fIntensity, bFits ? 500 : 0, 0.01)
            << pt.x() << " " << pt.y();
    }
    EXPECT_EQ(integrated(makeImage(50, 50, [](int, int) { return 20; }), 25, 2e9, 15, 3).fIntensity, 0);
}

TEST(SampleAtPositions, RoundsHalvesAwayFromZeroAndIsWholeOrEmpty)
{
    const CImgObj<float> img = makeImage(6, 4, [](int x, int y) { return 10 * y + x; });
    EXPECT_EQ(SampleAtPositions(img, {1.5, 2.49, 0, -0.4}, {0.5, 2.5, 3, 0}), (QList<double>{12, 32, 30, 0}));
    EXPECT_TRUE(SampleAtPositions(img, {1, -0.5}, {1, 1}).isEmpty());
    EXPECT_TRUE(SampleAtPositions(img, {1}, {std::nan("")}).isEmpty());
}

}  // namespace

}  // namespace tessera
