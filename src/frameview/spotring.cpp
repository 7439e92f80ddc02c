#include "frameview/spotring.h"

#include <QPainter>

#include <algorithm>

namespace tessera {

const double g_dfSmallestScale = 0.125;  // that the window offers

QRectF SpotRing::boundingRect() const
{
    const double df = double(m_fSize) / g_dfSmallestScale;
    return {-df, -df, 2 * df, 2 * df};
}

void SpotRing::paint(QPainter* pPainter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const double dfScale = std::max(pPainter->worldTransform().m11(), g_dfSmallestScale);
    const double dfRadius = double(m_fSize) / std::min(dfScale, 1.0);
    QPen pen = m_pen;
    pen.setCosmetic(true);
    pPainter->setPen(pen);
    pPainter->setBrush(Qt::NoBrush);
    pPainter->drawEllipse(QPointF(), dfRadius, dfRadius);
}

}  // namespace tessera
