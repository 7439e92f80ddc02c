#include "frameview/crossitem.h"

#include <QPainter>

namespace tessera {

void CrossItem::paint(QPainter* pPainter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const double s = m_fSize;
    pPainter->setPen(m_pen);
    pPainter->drawLine(QPointF(0.5 - s, 0.5), QPointF(s + 0.5, 0.5));
    pPainter->drawLine(QPointF(0.5, 0.5 - s), QPointF(0.5, s + 0.5));
}

}  // namespace tessera
