#include "frameview/textdatawidget.h"

#include "frameview/palettes.h"
#include "frameview/textitem.h"
#include "tests/frameview/testscenes.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tessera {

namespace {

class TextData : public testing::Test {
protected:
    TextData()
    {
        m_widget.resize(640, 400);
        m_widget.show();
    }
    void setFrame(int w, int h, const std::function<double(int, int)>& fnValue)
    {
        m_widget.setImage(makeFrame(w, h, fnValue)[0].get());
        CImgObj<unsigned char> imgByte;
        imgByte.Create(w, h);
        for (int i = 0; i < w * h; ++i) {
            imgByte.Data()[i] = static_cast<unsigned char>(i % 251);
        }
        m_widget.setByteImage(&imgByte);
    }
    bool refreshAt(QPointF pt)
    {
        m_widget.setCenter(pt);
        return m_widget.refresh();
    }
    // Items by (column, row) of the grid, by the size of its cells.
    std::map<std::pair<int, int>, TextItem*> grid() const
    {
        const QList<QGraphicsItem*> listItem = m_widget.scene()->items();
        double dfWidth = 1e9, dfHeight = 1e9;
        for (const QGraphicsItem* pItem : listItem) {
            dfWidth = pItem->x() > 0 ? std::min(dfWidth, pItem->x()) : dfWidth;
            dfHeight = pItem->y() > 0 ? std::min(dfHeight, pItem->y()) : dfHeight;
        }
        std::map<std::pair<int, int>, TextItem*> map;
        for (QGraphicsItem* pItem : listItem) {
            map[{qRound(pItem->x() / dfWidth), qRound(pItem->y() / dfHeight)}] = static_cast<TextItem*>(
                pItem);
        }
        EXPECT_EQ(map.size(), std::size_t(listItem.size())) << "items on one another";
        return map;
    }
    QString text(int c, int r) const { return grid().at({c, r})->text(); }
    int fieldWidth() const { return text(0, 0).size(); }

    TextDataWidget m_widget;
};

}  // namespace

TEST_F(TextData, FieldHoldsValuesAndPixelNumbers)
{
    const struct {
        int nSide;
        double dfMin, dfMax;
        int nWidth;
    } aRow[] = {{60, 0, 99, 3},     {60, 0, 100, 4},  {60, -9, 5, 3}, {60, -10, 5, 4},
                {60, -99999, 3, 7}, {60, 0, 1e12, 8}, {200, 0, 1, 4}};
    for (const auto& row : aRow) {
        const int nLast = row.nSide - 1;
        setFrame(row.nSide, row.nSide,
                 [&](int x, int y) { return x == nLast && y == nLast ? row.dfMin : row.dfMax; });
        ASSERT_TRUE(refreshAt(QPointF(nLast, nLast)));
        EXPECT_EQ(fieldWidth(), row.nWidth) << row.nSide << ' ' << row.dfMin << ' ' << row.dfMax;
    }
    setFrame(400, 400, [](int x, int) { return x > 200 ? 1e6 : 7.6; });  // large ones away from what is shown
    ASSERT_TRUE(refreshAt({10, 10}));
    EXPECT_EQ(text(1, 1), QStringLiteral("  8"));
}

TEST_F(TextData, GridLiesFullyOnTheImageAndTellsItsPixels)
{
    const int nSide = 90;
    const auto value = [](int x, int y) { return (x * 3 + y * 5) % 98 - 2; };
    setFrame(nSide, nSide, value);
    const QRgb rgbCross = QColor(32, 32, 32).rgb();
    const QRgb rgbCell = QColor(Qt::black).rgb();
    for (const QPointF& ptCenter :
         {QPointF(0, 0), QPointF(45.9, 44.2), QPointF(89.5, 1), QPointF(-0.5, 89)}) {
        ASSERT_TRUE(refreshAt(ptCenter));
        const auto map = grid();
        const auto [nColumns, nRows] = map.rbegin()->first;
        ASSERT_GT(nColumns, 10);
        ASSERT_GT(nRows, 10);
        EXPECT_EQ(int(map.size()), (nColumns + 1) * (nRows + 1));
        const int x0 = std::clamp(int(ptCenter.x()) - nColumns / 2, 0, nSide - nColumns);
        const int y0 = std::clamp(int(ptCenter.y()) - nRows / 2, 0, nSide - nRows);
        EXPECT_EQ(map.at({0, 0})->brush().color(), QColor(Qt::red));
        EXPECT_EQ(map.at({0, 0})->background().rgb(), rgbCross);
        for (const auto& [place, pItem] : map) {
            const auto [c, r] = place;
            const int x = x0 + c - 1, y = y0 + r - 1;
            if (c > 0 && r > 0) {
                EXPECT_EQ(pItem->text(), QString::number(value(x, y)).rightJustified(3));
                EXPECT_EQ(pItem->brush().color().rgb(), paletteTable(2)->at((y * nSide + x) % 251));
                const bool bCross = x == int(ptCenter.x()) || y == int(ptCenter.y());
                EXPECT_EQ(pItem->background().rgb(), bCross ? rgbCross : rgbCell);
            } else if (c + r > 0) {
                EXPECT_EQ(pItem->text(), QString::number(c == 0 ? y : x).rightJustified(3));
                EXPECT_EQ(pItem->background(), QColor(Qt::darkGray));
            }
        }
        // All that fits the window is used, and nothing beyond it.
        const QSizeF size = m_widget.sceneRect().size();
        EXPECT_LE(size.width(), m_widget.viewport()->width() - 1);
        EXPECT_LE(size.height(), m_widget.viewport()->height() - 1);
        EXPECT_NEAR(map.at({nColumns, nRows})->x(), size.width() * nColumns / (nColumns + 1), 1e-6);
    }
}

TEST_F(TextData, WithoutAUsableImageOrCentreTheGridStays)
{
    EXPECT_FALSE(m_widget.refresh());
    setFrame(50, 50, [](int, int) { return 5; });
    ASSERT_TRUE(refreshAt({20, 20}));
    const int nItems = m_widget.scene()->items().size();
    for (const QPointF& pt : {QPointF(50, 3), QPointF(3, 50), QPointF(-1, 3), QPointF(std::nan(""), 3)}) {
        EXPECT_FALSE(refreshAt(pt));
    }
    m_widget.setCenter({20, 20});
    m_widget.setImage(makeFrame(40, 50, 6)[0].get());  // the bytes follow later
    EXPECT_FALSE(m_widget.refresh());
    EXPECT_EQ(m_widget.scene()->items().size(), nItems);
    EXPECT_EQ(text(1, 1), QStringLiteral("  5"));

    m_widget.hide();
    setFrame(50, 50, [](int, int) { return 9; });
    EXPECT_FALSE(m_widget.refresh());
    EXPECT_EQ(text(1, 1), QStringLiteral("  5"));
    m_widget.show();  // shows what came meanwhile
    EXPECT_EQ(text(1, 1), QStringLiteral("  9"));
}

TEST_F(TextData, SmallImagesAndWindowsOfAnySize)
{
    setFrame(2, 3, [](int x, int y) { return 10 * x + y; });
    ASSERT_TRUE(refreshAt({1, 1}));
    EXPECT_EQ(grid().size(), 12u);  // 2 × 3 cells, headers and corner
    EXPECT_EQ(text(2, 3), QStringLiteral(" 12"));
    m_widget.resize(30, 300);  // one column
    EXPECT_TRUE(m_widget.refresh());
    EXPECT_EQ(m_widget.scene()->items().size(), 1);
}

}  // namespace tessera
