#include "frameview/discitem.h"

#include <QPen>

namespace tessera {

DiscItem::DiscItem(const QPointF& ptCentre, double dfRadius, const QColor& color, const QString& strTip)
    : QGraphicsEllipseItem(-dfRadius, -dfRadius, 2 * dfRadius, 2 * dfRadius)
{
    QPen penLine(color, 1);
    penLine.setCosmetic(true);
    setPen(penLine);
    setPos(ptCentre);
    setToolTip(strTip);
}

}  // namespace tessera
