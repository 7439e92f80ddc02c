#include "frames/localmaxima.h"

#include "frames/peakmask.h"
#include "records/pi.h"
#include "tests/frames/frameseries.h"

namespace tessera {

namespace {

TEST(FindLocalMaxima, AgreesWithTheMaximumOfNeighboursInRowOrder)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> value(-20, 20);  // few levels: many ties
    const int nW = 150, nH = 43;  // some runs of pixels reach the highest threshold, others do not
    CImgObj<float> img = makeImage(nW, nH, [&](int, int) { return value(random); });
    img.Data()[20 * nW + 20] = std::nanf("");  // neither a maximum nor beside one
    for (float fThreshold : {-100.f, 0.f, 20.f}) {
        QList<double> listExpectedX, listExpectedY, listX{-1}, listY{-1};
        for (int i = 0; i < nW * nH; ++i) {
            const int x = i % nW, y = i / nW;
            int nBelow = 0;
            for (int d = 0; d < 9 && x > 0 && x < nW - 1 && y > 0 && y < nH - 1; ++d) {
                nBelow += img.Data()[(y + d / 3 - 1) * nW + x + d % 3 - 1] < img.Data()[i];
            }
            if (nBelow == 8 && img.Data()[i] >= fThreshold) {
                listExpectedX.append(x);
                listExpectedY.append(y);
            }
        }
        FindLocalMaxima(img, fThreshold, listX, listY, 1.0);
        EXPECT_GT(listX.size(), 20);
        EXPECT_EQ(listX, listExpectedX);
        EXPECT_EQ(listY, listExpectedY);
        for (const double dfFraction : {1.0, 0.003}) {  // row by row as from the image, and too many alike
            CMaximaOfRows rows(nW, nH, fThreshold, dfFraction);
            for (int y = 0; y < nH; ++y) {
                rows.add(img.Data() + y * nW, -100.f);
            }
            EXPECT_EQ(rows.tooMany(), !FindLocalMaxima(img, fThreshold, listX, listY, dfFraction));
            EXPECT_EQ(rows.tooMany(), dfFraction < 1);
            EXPECT_EQ(rows.listX(), listX);
            EXPECT_EQ(rows.listY(), listY);
        }
    }
}

TEST(FindLocalMaxima, TooManyCandidatesAreNoneOneFewerAreAll)
{
    QList<double> listX, listY;  // limit 100: the list may hold 101, and a candidate beyond that empties it
    for (int nPeaks : {101, 102, 300}) {
        const CImgObj<float> img = makeImage(100, 100, [&](int x, int y) {
            return x % 3 == 1 && y % 3 == 1 && x < 91 && (y / 3) * 30 + x / 3 < nPeaks ? 5 : 0;
        });
        EXPECT_EQ(FindLocalMaxima(img, 1.f, listX, listY, 0.01), nPeaks <= 101);
        EXPECT_EQ(listX.size(), nPeaks <= 101 ? nPeaks : 0) << nPeaks;
    }
}

TEST(RemoveMaskedPeaks, DropsWhatLiesInAnyPolygonByTheFillRule)
{
    // a pentagram: its middle is crossed twice, so it counts as outside by the odd-even rule
    QPolygonF star;
    for (int i = 0; i < 5; ++i) {
        star << QPointF(50 + 40 * std::cos(i * 0.8 * g_dfPi), 50 + 40 * std::sin(i * 0.8 * g_dfPi));
    }
    for (Qt::FillRule rule : {Qt::OddEvenFill, Qt::WindingFill}) {
        QList<double> listX{50, 85, 110, 130, 5}, listY{50, 50, 10, 10, 5};
        removeMaskedPeaks({rule, {star, QPolygonF(QRectF(100, 0, 20, 20))}}, listX, listY);
        EXPECT_EQ(listX, rule == Qt::OddEvenFill ? (QList<double>{50, 130, 5}) : (QList<double>{130, 5}));
        EXPECT_EQ(listY.size(), listX.size());
    }
}

}  // namespace

}  // namespace tessera
