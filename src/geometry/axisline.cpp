#include "geometry/axisline.h"

#include <QList>

#include <cmath>

namespace tessera {

namespace {

const double g_dfParallel = 1e-7;  // determinant of the end-point differences, pixels²

double determinant(const QPointF& a, const QPointF& b)
{
    return a.x() * b.y() - a.y() * b.x();
}

bool isParallel(const QLineF& first, const QLineF& second)
{
    return std::fabs(determinant(first.p2() - first.p1(), second.p2() - second.p1())) < g_dfParallel;
}

// The intersection of two lines that are not parallel, rounded to whole pixels.
QPointF roundedCut(const QLineF& line, const QLineF& edge)
{
    const QPointF ptAlong = line.p2() - line.p1();
    const QPointF ptEdge = edge.p2() - edge.p1();
    const double df = determinant(edge.p1() - line.p1(), ptEdge) / determinant(ptAlong, ptEdge);
    const QPointF pt = line.p1() + df * ptAlong;
    return {std::round(pt.x()) + 0.0, std::round(pt.y()) + 0.0};  // + 0.0 turns −0 into 0
}

// Removes points that occur twice, as an axis through a corner meets two edges there.
void dropRepeated(QList<QPointF>& listPoint)
{
    for (int i = 0; i < listPoint.size();) {
        if (listPoint.indexOf(listPoint[i], i + 1) >= 0) {
            listPoint.removeAt(i);
        } else {
            ++i;
        }
    }
}

}  // namespace

std::optional<QLineF> axisLine(const QPointF& ptCentre, double dfRotationAxis, const QSize& sizeFrame)
{
    if (sizeFrame.isEmpty() || !std::isfinite(ptCentre.x()) || !std::isfinite(ptCentre.y()) ||
        !std::isfinite(dfRotationAxis)) {
        return std::nullopt;
    }
    const double dfWidth = sizeFrame.width();
    const double dfHeight = sizeFrame.height();
    QLineF axis(ptCentre, ptCentre + QPointF(1, 0));
    axis.setAngle(dfRotationAxis);
    const QLineF top(0, 0, dfWidth, 0);
    const QLineF left(0, 0, 0, dfHeight);
    const QLineF right(dfWidth, 0, dfWidth, dfHeight);
    const QLineF bottom(0, dfHeight, dfWidth, dfHeight);
    if (isParallel(axis, top)) {
        return QLineF(0, ptCentre.y(), dfWidth, ptCentre.y());
    }
    if (isParallel(axis, left)) {
        return QLineF(ptCentre.x(), 0, ptCentre.x(), dfHeight);
    }
    QList<QPointF> listEnd;
    for (const QLineF& edge : {top, left, right, bottom}) {
        const QPointF pt = roundedCut(axis, edge);
        if (pt.x() >= 0 && pt.x() <= dfWidth && pt.y() >= 0 && pt.y() <= dfHeight) {
            listEnd.append(pt);
        }
    }
    if (listEnd.size() != 2) {
        dropRepeated(listEnd);
    }
    if (listEnd.size() != 2) {
        return std::nullopt;
    }
    return QLineF(listEnd[0], listEnd[1]);
}

}  // namespace tessera
