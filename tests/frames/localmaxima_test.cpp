#include "frames/localmaxima.h"

#include "frames/frameseries.h"
#include "frames/peakmask.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Positions = QList<QPair<int, int>>;

Positions maxima(const CImgObj<float>& img, float fThreshold, double dfFraction)
{
    QList<double> listX{-1}, listY{-1};  // to be replaced
    FindLocalMaxima(img, fThreshold, listX, listY, dfFraction);
    Positions list;
    EXPECT_EQ(listX.size(), listY.size());
    for (int i = 0; i < std::min(listX.size(), listY.size()); ++i)
        list.append({int(listX[i]), int(listY[i])});
    return list;
}

TEST(FindLocalMaxima, AgreesWithTheMaximumOfNeighboursInRowOrder)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> value(-20, 20);  // few levels: many ties
    const int nW = 61, nH = 43;
    const CImgObj<float> img = makeImage(nW, nH, [&](int, int) { return value(random); });
    for (float fThreshold : {-100.f, 0.f, 15.f, 20.f}) {
        Positions listExpected;
        for (int y = 1; y < nH - 1; ++y)
            for (int x = 1; x < nW - 1; ++x) {
                float fNeighbour = -1e9f;
                for (int d = 0; d < 9; ++d)
                    if (d != 4)
                        fNeighbour = std::max(fNeighbour, img.Data()[(y + d / 3 - 1) * nW + x + d % 3 - 1]);
                const float f = img.Data()[y * nW + x];
                if (f >= fThreshold && f > fNeighbour)
                    listExpected.append({x, y});
            }
        EXPECT_GT(listExpected.size(), 5);
        EXPECT_EQ(maxima(img, fThreshold, 1.0), listExpected) << fThreshold;
    }
}

TEST(FindLocalMaxima, TooManyCandidatesAreNoneOneFewerAreAll)
{
    // limit 100: the list may hold 101, and a candidate beyond that empties it
    for (int nPeaks : {100, 101, 102, 300}) {
        const CImgObj<float> img = makeImage(100, 100, [&](int x, int y) {
            return x % 3 == 1 && y % 3 == 1 && x < 91 && (y / 3) * 30 + x / 3 < nPeaks ? 5 : 0;
        });
        EXPECT_EQ(maxima(img, 1.f, 0.01).size(), nPeaks <= 101 ? nPeaks : 0) << nPeaks;
    }
}

TEST(FindLocalMaxima, KnowsNoMaximaAtEdgesInTiesOrBesideNaN)
{
    const float fNaN = std::numeric_limits<float>::quiet_NaN();
    const struct {
        const char* pWhat;
        std::vector<float> vec;  // 5 x 4
        int nExpected;
    } aRow[] = {
        {"inside", {0, 0, 0, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 1},
        {"edge", {0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9, 0, 0, 9, 0, 0}, 0},
        {"tie", {0, 0, 0, 0, 0, 0, 9, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0},
        {"diagonal tie", {0, 0, 0, 0, 0, 0, 9, 0, 0, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0}, 0},
        {"NaN beside", {0, 0, 0, 0, 0, 0, 9, fNaN, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0},
        {"constant", std::vector<float>(20, 0.f), 0},
    };
    for (const auto& row : aRow) {
        CImgObj<float> img;
        img.Set(row.vec.data(), 5, 4);
        EXPECT_EQ(maxima(img, 0.f, 1.0).size(), row.nExpected) << row.pWhat;
    }
    EXPECT_TRUE(maxima(makeImage(2, 50, [](int, int y) { return y == 9; }), 0.f, 1.0).isEmpty());
    EXPECT_TRUE(maxima(CImgObj<float>(), 0.f, 1.0).isEmpty());
}

TEST(RemoveMaskedPeaks, DropsWhatLiesInAnyPolygonByTheFillRule)
{
    // a pentagram: its middle is crossed twice, so it counts as outside by the odd-even rule
    QPolygonF star;
    for (int i = 0; i < 5; ++i)
        star << QPointF(50 + 40 * std::cos(i * 0.8 * M_PI), 50 + 40 * std::sin(i * 0.8 * M_PI));
    const QPolygonF square(QRectF(100, 0, 20, 20));
    const QList<double> listAllX{50, 85, 110, 130, 5}, listAllY{50, 50, 10, 10, 5};
    const struct {
        Qt::FillRule rule;
        QList<QPolygonF> listPolygon;
        QList<double> listKept;
    } aRow[] = {{Qt::OddEvenFill, {star, square}, {50, 130, 5}},
                {Qt::WindingFill, {star, square}, {130, 5}},
                {Qt::OddEvenFill, {}, listAllX}};
    for (const auto& row : aRow) {
        QList<double> listX = listAllX, listY = listAllY;
        removeMaskedPeaks({row.rule, row.listPolygon}, listX, listY);
        EXPECT_EQ(listX, row.listKept);
        EXPECT_EQ(listX.size(), listY.size());
    }
}

}  // namespace
