#include "frameview/circleitem.h"

#include "frameview/markzoom.h"

#include <QPainter>

namespace tessera {

void CircleItem::paint(QPainter* pPainter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const int nCorner = int(-m_fSize);
    const int nSide = int(2.f * m_fSize + 1.f);
    setPenOn(*pPainter, CMarkZoom(*pPainter));
    pPainter->drawArc(nCorner, nCorner, nSide, nSide, 0, 360 * 16);
}

}  // namespace tessera
