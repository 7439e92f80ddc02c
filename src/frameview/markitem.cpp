#include "frameview/markitem.h"

#include "frameview/markzoom.h"

#include <QPainter>

namespace tessera {

MarkItem::MarkItem(QGraphicsItem* pParent) : QGraphicsItem(pParent) {}

void MarkItem::setSize(float fSize)
{
    prepareGeometryChange();
    m_fSize = fSize;
    update();
}

void MarkItem::setColor(const QColor& color)
{
    m_pen.setColor(color);
    update();
}

void MarkItem::setPenWidth(double dfWidth)
{
    m_pen.setWidthF(dfWidth);
    update();
}

void MarkItem::setPenOn(QPainter& painter, const CMarkZoom& zoom) const
{
    QPen pen = m_pen;
    if (!zoom.isActualSize()) {
        pen.setWidthF(m_pen.widthF() * zoom.penWidth());
        QColor color = m_pen.color();
        color.setAlphaF(color.alphaF() * zoom.opacity());
        pen.setColor(color);
    }
    painter.setPen(pen);
}

QRectF MarkItem::boundingRect() const
{
    return {-m_fSize / 2.0, -m_fSize / 2.0, m_fSize, m_fSize};
}

}  // namespace tessera
