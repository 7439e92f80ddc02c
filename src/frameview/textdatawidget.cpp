#include "frameview/textdatawidget.h"

#include "frameview/palettes.h"
#include "frameview/textitem.h"
#include "imaging/imageview.h"

#include <QFont>
#include <QFontMetrics>
#include <QResizeEvent>
#include <QScopeGuard>

#include <algorithm>

namespace tessera {

namespace {

QFont gridFont()
{
    QFont font(QStringLiteral("Courier"));
    font.setStyleHint(QFont::Monospace);  // columns stay aligned where the family is missing
    return font;
}

}  // namespace

TextDataWidget::TextDataWidget(QWidget* pParent)
    : QGraphicsView(pParent),
      m_pScene(new QGraphicsScene(this)),
      m_colorHeader(Qt::darkGray),
      m_colorCell(Qt::black),
      m_colorCross(32, 32, 32)
{
    m_pScene->setItemIndexMethod(QGraphicsScene::NoIndex);  // all items change at each refresh
    setScene(m_pScene);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setBackgroundBrush(m_colorCell);
    // The grid fits the window; a bar for the grid before would take room from it.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    growPool(m_listHeaderItem, m_colorHeader, 100);
    growPool(m_listCellItem, m_colorCell, 2000);
    growPool(m_listCrossItem, m_colorCross, 100);
}

TextDataWidget::~TextDataWidget()
{
    setScene(nullptr);
    qDeleteAll(m_listHeaderItem);
    qDeleteAll(m_listCellItem);
    qDeleteAll(m_listCrossItem);
}

void TextDataWidget::growPool(QList<TextItem*>& listItem, const QColor& colorBackground, int nCount)
{
    for (int i = 0; i < nCount; ++i) {
        auto* pItem = new TextItem;
        pItem->setFont(gridFont());
        pItem->setBackground(colorBackground);
        listItem.append(pItem);
    }
}

void TextDataWidget::setImage(const CImgObj<float>* pImage)
{
    m_imgData.Copy(pImage);
}

void TextDataWidget::setByteImage(const CImgObj<unsigned char>* pImage)
{
    m_imgByte.Copy(pImage);
}

void TextDataWidget::setCenter(QPointF ptCenter)
{
    m_ptCenter = ptCenter;
}

// The narrowest field, 3 to 8 characters, that takes all values and pixel numbers of the part of the frame
// for which it leaves room. The widest one is taken whatever the values are.
std::optional<TextDataWidget::Layout> TextDataWidget::findLayout() const
{
    const int nImgWidth = m_imgData.Width();
    const int nImgHeight = m_imgData.Height();
    // As real numbers first: a centre far off would not fit an int.
    if (!(m_ptCenter.x() > -1.0 && m_ptCenter.x() < nImgWidth && m_ptCenter.y() > -1.0 &&
          m_ptCenter.y() < nImgHeight)) {
        return std::nullopt;
    }
    Layout layout;
    const QFontMetrics metrics(gridFont());
    double dfLimit = 10.0;  // 10^k
    for (int k = 1; k <= 6; ++k, dfLimit *= 10.0) {
        layout.nDigits = k + 2;
        const QSize sizeCell = metrics.size(Qt::TextSingleLine, QString(layout.nDigits, QLatin1Char('1')));
        layout.nCellWidth = std::max(sizeCell.width(), 1);
        layout.nCellHeight = std::max(sizeCell.height(), 1);
        layout.nColumns = std::max(viewport()->width() - 1, 0) / layout.nCellWidth;
        layout.nRows = std::max(viewport()->height() - 1, 0) / layout.nCellHeight;
        layout.w = std::clamp(layout.nColumns - 1, 0, nImgWidth);
        layout.h = std::clamp(layout.nRows - 1, 0, nImgHeight);
        layout.x0 = std::clamp(int(m_ptCenter.x()) - layout.w / 2, 0, nImgWidth - layout.w);
        layout.y0 = std::clamp(int(m_ptCenter.y()) - layout.h / 2, 0, nImgHeight - layout.h);

        double dfMax = std::max(layout.x0 + layout.w, layout.y0 + layout.h);
        double dfMin = 0.0;  // the limit lies below 0, so that 0 decides nothing
        for (int y = layout.y0; y < layout.y0 + layout.h; ++y) {
            const float* pRow = m_imgData.Data() + std::size_t(y) * std::size_t(nImgWidth);
            for (int x = layout.x0; x < layout.x0 + layout.w; ++x) {
                dfMax = pRow[x] > dfMax ? double(pRow[x]) : dfMax;
                dfMin = pRow[x] < dfMin ? double(pRow[x]) : dfMin;
            }
        }
        if (dfMax < 10.0 * dfLimit && dfMin > -dfLimit) {
            break;
        }
    }
    return layout;
}

void TextDataWidget::clearImages()
{
    m_imgData.Release();
    m_imgByte.Release();
    takeGridAway();
}

bool TextDataWidget::refresh()
{
    if (!isVisible() || m_imgData.Width() != m_imgByte.Width() || m_imgData.Height() != m_imgByte.Height() ||
        m_imgData.Width() < 1 || m_imgData.Height() < 1) {
        return false;
    }
    const std::optional<Layout> layout = findLayout();
    if (!layout) {
        return false;
    }
    {
        setUpdatesEnabled(false);
        const auto painting = qScopeGuard([this] { setUpdatesEnabled(true); });
        takeGridAway();
        m_pScene->setSceneRect(0.0, 0.0, layout->nCellWidth * layout->nColumns,
                               layout->nCellHeight * layout->nRows);
        growPools(*layout);
        fillGrid(*layout);
    }
    viewport()->update();
    return true;
}

void TextDataWidget::takeGridAway()
{
    for (QGraphicsItem* pItem : m_pScene->items()) {
        m_pScene->removeItem(pItem);
    }
}

void TextDataWidget::growPools(const Layout& layout)
{
    if (layout.nColumns + layout.nRows - 2 > m_listHeaderItem.size()) {
        growPool(m_listHeaderItem, m_colorHeader, m_listHeaderItem.size());
        growPool(m_listCrossItem, m_colorCross, m_listCrossItem.size());
    }
    if ((layout.nColumns - 1) * (layout.nRows - 1) > m_listCellItem.size()) {
        growPool(m_listCellItem, m_colorCell, m_listCellItem.size());
    }
}

void TextDataWidget::fillGrid(const Layout& layout)
{
    Pool headers{m_listHeaderItem}, cells{m_listCellItem}, crosses{m_listCrossItem};
    const int d = layout.nDigits;
    m_listHeaderItem.first()->setBackground(m_colorCross);
    place(headers, layout, {0, 0}, QStringLiteral("%1").arg(QStringLiteral("I."), d), Qt::red);
    // A window with room for one column or one row alone gets the corner and nothing else.
    const int nColumns = layout.h > 0 ? layout.w : 0;
    const int nRows = layout.w > 0 ? layout.h : 0;
    for (int c = 1; c <= nColumns; ++c) {
        place(headers, layout, {c, 0}, QStringLiteral("%1").arg(layout.x0 + c - 1, d), Qt::black);
    }
    for (int r = 1; r <= nRows; ++r) {
        place(headers, layout, {0, r}, QStringLiteral("%1").arg(layout.y0 + r - 1, d), Qt::black);
    }

    const QVector<QRgb>& vecColor = *paletteTable(2);
    for (int c = 1; c <= nColumns; ++c) {
        const int x = layout.x0 + c - 1;
        for (int r = 1; r <= nRows; ++r) {
            const int y = layout.y0 + r - 1;
            const bool bCross = x == int(m_ptCenter.x()) || y == int(m_ptCenter.y());
            place(bCross ? crosses : cells, layout, {c, r},
                  QStringLiteral("%1").arg(double(viewOf(m_imgData).at(x, y)), d, 'f', 0),
                  QColor(vecColor[viewOf(m_imgByte).at(x, y)]));
        }
    }
}

// Puts the next item of a pool into a column and row; the grid goes without items that the pool lacks.
void TextDataWidget::place(Pool& pool, const Layout& layout, const QPoint& ptCell, const QString& strText,
                           const QColor& color)
{
    if (pool.nUsed >= pool.listItem.size()) {
        return;
    }
    TextItem* pItem = pool.listItem[pool.nUsed++];
    pItem->setText(strText);
    pItem->setBrushColor(color);
    pItem->setPos(ptCell.x() * layout.nCellWidth, ptCell.y() * layout.nCellHeight);
    m_pScene->addItem(pItem);
}

void TextDataWidget::resizeEvent(QResizeEvent* pEvent)
{
    QGraphicsView::resizeEvent(pEvent);
    refresh();
    pEvent->accept();
}

void TextDataWidget::showEvent(QShowEvent* pEvent)
{
    QGraphicsView::showEvent(pEvent);
    refresh();  // frames and centres that came while the window was hidden
}

}  // namespace tessera
