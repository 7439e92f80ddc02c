#include "frameview/textitem.h"

#include "frameview/markzoom.h"

#include <QBrush>
#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPen>

#include <algorithm>

namespace tessera {

namespace {

const double g_dfMostScale = 2.0;  // below 50 % letters of the same size would cover the frame
const double g_dfOutline = 2.0;    // pixels of the screen; half of the outline is below the letters

}  // namespace

TextItem::TextItem(QGraphicsItem* pParent) : QGraphicsSimpleTextItem(pParent), m_colorBackground(0, 0, 0, 0)
{}

void TextItem::setBackground(const QColor& color)
{
    m_colorBackground = color;
    update();
}

void TextItem::setBrushColor(const QColor& color)
{
    setBrush(QBrush(color));
}

void TextItem::setFontSize(double dfPointSize)
{
    if (!(dfPointSize > 0.0)) {
        return;
    }
    QFont fontNew = font();
    fontNew.setPointSizeF(dfPointSize);
    setFont(fontNew);
}

void TextItem::setScreenSized(double dfGap)
{
    prepareGeometryChange();
    m_bScreenSized = true;
    m_dfGap = dfGap;
    update();
}

QRectF TextItem::boundingRect() const
{
    const QRectF rect = QGraphicsSimpleTextItem::boundingRect();
    if (!m_bScreenSized) {
        return rect;
    }
    return {rect.topLeft(), rect.size() * g_dfMostScale + QSizeF(m_dfGap, m_dfGap)};
}

// In half the width of the screen's line on either side of the outline of the letters.
void TextItem::paintScreenSized(QPainter& painter) const
{
    const CMarkZoom zoom(painter);
    const double dfScale = std::min(1.0 / zoom.zoom(), g_dfMostScale);
    const QFontMetricsF metrics(font());
    QPainterPath path;
    path.addText(0, metrics.ascent(), font(), text());
    painter.save();
    const double dfGap = zoom.gap(m_dfGap);
    painter.translate(dfGap, dfGap);
    painter.scale(dfScale, dfScale);
    painter.strokePath(path, QPen(pen().color(), g_dfOutline, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(path, brush());
    painter.restore();
}

void TextItem::paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget)
{
    if (m_colorBackground.alpha() > 0) {
        pPainter->fillRect(boundingRect(), m_colorBackground);
    }
    if (m_bScreenSized) {
        return paintScreenSized(*pPainter);
    }
    QGraphicsSimpleTextItem::paint(pPainter, pOption, pWidget);
}

}  // namespace tessera
