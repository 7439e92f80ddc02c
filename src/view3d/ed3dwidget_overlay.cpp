// The texts that ED3DWidget shows over its points: the nearest zone, the slab, and the distance of two
// points.
#include "cloud/cloudfit.h"
#include "view3d/ed3dwidget.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace tessera {

namespace {

const int g_nMargin = 8;  // pixels of the widget, from the edges and of the line's ground

}  // namespace

void ED3DWidget::fitView()
{
    if (const auto zoom = zoomToFit(cloudVertices(), m_camera, width(), height(), m_bKeepAspect)) {
        m_camera.m_fPanX = m_camera.m_fPanY = 0.f;
        m_camera.setZoom(*zoom);
        update();
    }
}

std::optional<NearestZone> ED3DWidget::zoneInView() const
{
    return m_cellFrame ? std::make_optional(nearestZone(*m_cellFrame, m_camera.viewDirection()))
                       : std::nullopt;
}

void ED3DWidget::turnToNearestZone()
{
    if (const auto zone = zoneInView()) {
        m_camera.turnTowards(
            {float(zone->direction[0]), float(zone->direction[1]), float(zone->direction[2])});
        update();
    }
}

std::optional<Vec3D> ED3DWidget::zoneDirection(const std::array<int, 3>& anIndex) const
{
    if (!m_cellFrame) {
        return std::nullopt;
    }
    const DoubleVector v = m_cellFrame->zone(anIndex);
    return Vec3D{float(v[0]), float(v[1]), float(v[2])};
}

void ED3DWidget::measure(int nFrom, int nTo)
{
    const auto isPoint = [this](int n) { return n >= 0 && n < m_listPoint.size(); };
    m_anMeasured = {-1, -1};
    if (isPoint(nFrom) && isPoint(nTo) && nFrom != nTo) {
        m_anMeasured = {nFrom, nTo};
        emit textMessage(
            pairText(measurePair(m_listPoint.at(nFrom).point(), m_listPoint.at(nTo).point(), m_cellFrame)));
    }
    update();
}

/// Starts a measurement and discards the previous one. @return whether there is a point at this place
bool ED3DWidget::startMeasuring(const QPoint& pt)
{
    m_anMeasured = {pointAt(pt), -1};
    m_ptMeasureEnd = pt;
    update();
    return m_anMeasured[0] >= 0;
}

void ED3DWidget::measureTo(const QPoint& pt)
{
    const int nFrom = m_anMeasured[0], nTo = pointAt(pt);
    if (nTo >= 0 && nTo != nFrom) {
        if (nTo != m_anMeasured[1]) {
            measure(nFrom, nTo);
        }
        return;
    }
    // From the point to the pointer while the drag goes on; a line that has come to no point goes.
    m_anMeasured = {m_nMouseMode == MouseMode::Measure ? nFrom : -1, -1};
    m_ptMeasureEnd = pt;
    update();
}

QStringList ED3DWidget::overlayLines()
{
    QStringList listLine;
    if (const auto zone = zoneInView()) {
        listLine.append(nearestZoneText(*zone));
    }
    if (m_slab && !m_cellFrame) {
        listLine.append(tr("%1: there is no cell").arg(slabName(*m_slab)));
    } else if (m_slab) {
        cloudVertices();  // counts
        QString strLine = tr("%1: %L2 of %L3 points").arg(slabName(*m_slab)).arg(m_nSlabShown).arg(m_nSlabOf);
        const QList<int>& listSelected = selectedPoints();
        const auto nOut = std::count_if(listSelected.begin(), listSelected.end(),
                                        [this](int nPoint) { return !isPointInSlab(nPoint); });
        if (nOut > 0) {
            strLine += tr("; %L1 of %L2 selected outside").arg(nOut).arg(listSelected.size());
        }
        listLine.append(strLine);
    }
    if (isPointDrawn(m_anMeasured[0]) && isPointDrawn(m_anMeasured[1])) {
        listLine.append(pairText(measurePair(m_listPoint.at(m_anMeasured[0]).point(),
                                             m_listPoint.at(m_anMeasured[1]).point(), m_cellFrame)));
    }
    return listLine;
}

/// Draws with a painter, whose texts and lines are as sharp as the screen allows; without a text
/// or a line nothing.
void ED3DWidget::drawOverlay()
{
    const QStringList listLine = overlayLines();
    const bool bLine = isPointDrawn(m_anMeasured[0]) &&
                       (m_nMouseMode == MouseMode::Measure || m_anMeasured[1] >= 0) &&
                       (m_anMeasured[1] < 0 || isPointDrawn(m_anMeasured[1]));
    if (listLine.isEmpty() && !bLine) {
        return;
    }
    const bool bDark = m_colorBackground.lightness() < 128;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (bLine) {
        const QPointF ptFrom = placeOfPoint(m_anMeasured[0]);
        const QPointF ptTo = m_anMeasured[1] >= 0 ? placeOfPoint(m_anMeasured[1]) : QPointF(m_ptMeasureEnd);
        painter.setPen(QPen(Qt::black, 4));  // the line is seen over white points as well
        painter.drawLine(ptFrom, ptTo);
        painter.setPen(QPen(Qt::yellow, 1.5));
        painter.drawLine(ptFrom, ptTo);
    }
    QColor colorGround = m_colorBackground;
    colorGround.setAlpha(180);
    const QFontMetrics metrics(painter.font());
    int nTop = g_nMargin;
    for (const QString& strLine : listLine) {
        const QRect rc(g_nMargin, nTop, metrics.horizontalAdvance(strLine) + g_nMargin, metrics.height());
        painter.fillRect(rc, colorGround);
        painter.setPen(bDark ? Qt::white : Qt::black);
        painter.drawText(rc, Qt::AlignCenter, strLine);
        nTop += metrics.lineSpacing();
    }
    painter.end();
    setDrawingState();  // the painter leaves its own
}

}  // namespace tessera
