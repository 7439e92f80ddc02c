#include "frameview/markitem.h"

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

QRectF MarkItem::boundingRect() const
{
    return {-m_fSize / 2.0, -m_fSize / 2.0, m_fSize, m_fSize};
}

}  // namespace tessera
