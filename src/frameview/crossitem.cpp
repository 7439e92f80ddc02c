#include "frameview/crossitem.h"

#include "frameview/markzoom.h"

#include <QPainter>

namespace tessera {

void CrossItem::paint(QPainter* pPainter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const double s = m_fSize;
    const CMarkZoom zoom(*pPainter);
    setPenOn(*pPainter, zoom);
    const double dfGap = zoom.gap(s);
    if (dfGap > 0) {
        for (const double dfSign : {-1.0, 1.0}) {
            pPainter->drawLine(QPointF(0.5 + dfSign * dfGap, 0.5), QPointF(0.5 + dfSign * s, 0.5));
            pPainter->drawLine(QPointF(0.5, 0.5 + dfSign * dfGap), QPointF(0.5, 0.5 + dfSign * s));
        }
        return;
    }
    pPainter->drawLine(QPointF(0.5 - s, 0.5), QPointF(s + 0.5, 0.5));
    pPainter->drawLine(QPointF(0.5, 0.5 - s), QPointF(0.5, s + 0.5));
}

}  // namespace tessera
