#include "frameview/selrectitem.h"

#include <QPainter>
#include <QPen>

#include <cmath>

namespace tessera {

namespace {

const double g_dfCrossArm = 5.0;  // scene units

// One coordinate of the item's position. A bound narrower than the rectangle cannot hold it; then the
// near edges are put together, as the two conditions would push the item to and fro for ever.
double clamped(double df, double dfHalf, double dfLow, double dfHigh)
{
    if (df < dfLow + dfHalf || dfHigh - dfLow < 2.0 * dfHalf) {
        return dfLow + dfHalf + 0.5;
    }
    if (df > dfHigh - dfHalf) {
        return dfHigh - dfHalf + 0.5;
    }
    return df;
}

}  // namespace

SelRectItem::SelRectItem(QGraphicsItem* pParent) : QGraphicsRectItem(pParent)
{
    setPenWidth(1.0);
    setFlags(ItemIsMovable | ItemSendsGeometryChanges);
}

void SelRectItem::setSelSize(double dfWidth, double dfHeight)
{
    setRect(0.5 - dfWidth / 2.0, 0.5 - dfHeight / 2.0, dfWidth, dfHeight);
    clampToBound();
}

void SelRectItem::setBound(const QRectF& rectBound)
{
    m_rectBound = rectBound;
    clampToBound();
}

void SelRectItem::setPenColor(const QColor& color)
{
    QPen penNew = pen();
    penNew.setColor(color);
    setPen(penNew);
}

void SelRectItem::setPenWidth(double dfWidth)
{
    QPen penNew = pen();
    penNew.setWidthF(dfWidth);
    setPen(penNew);
}

void SelRectItem::clampToBound()
{
    const double x = clamped(pos().x(), rect().width() / 2.0, m_rectBound.left(), m_rectBound.right());
    const double y = clamped(pos().y(), rect().height() / 2.0, m_rectBound.top(), m_rectBound.bottom());
    if (x != pos().x() || y != pos().y()) {
        setPos(x, y);
    }
}

QVariant SelRectItem::itemChange(GraphicsItemChange change, const QVariant& value)
{
    if (change == ItemPositionHasChanged && !m_bClamping) {
        m_bClamping = true;  // the correction below reports through this call, once
        clampToBound();
        m_bClamping = false;
        // At an edge, and during a drag at a high zoom, the position lies between whole pixels.
        const QPointF pt = scenePos() + rect().topLeft() - QPointF(0.5, 0.5);
        emit positionChanged(QRectF(std::floor(pt.x()), std::floor(pt.y()), rect().width(), rect().height()));
    }
    return QGraphicsRectItem::itemChange(change, value);
}

QRectF SelRectItem::boundingRect() const
{
    const double dfReach = g_dfCrossArm + pen().widthF() / 2.0;
    const QPointF ptReach(dfReach, dfReach);
    const QPointF ptCenter = rect().center();
    return QGraphicsRectItem::boundingRect() | QRectF(ptCenter - ptReach, ptCenter + ptReach);
}

void SelRectItem::paint(QPainter* pPainter, const QStyleOptionGraphicsItem* pOption, QWidget* pWidget)
{
    QPen penCross = pen();
    penCross.setColor(Qt::red);
    pPainter->setPen(penCross);
    const QPointF pt = rect().center();
    pPainter->drawLine(pt - QPointF(g_dfCrossArm, 0.0), pt + QPointF(g_dfCrossArm, 0.0));
    pPainter->drawLine(pt - QPointF(0.0, g_dfCrossArm), pt + QPointF(0.0, g_dfCrossArm));
    QGraphicsRectItem::paint(pPainter, pOption, pWidget);
}

}  // namespace tessera
