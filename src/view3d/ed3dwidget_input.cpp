// Mouse and keys of ED3DWidget, and the rubber band.
#include "cloud/picking.h"
#include "view3d/ed3dwidget.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

void store(const Vec3D& v, float* pf)
{
    pf[0] = v.x;
    pf[1] = v.y;
    pf[2] = v.z;
}

}  // namespace

void ED3DWidget::mousePressEvent(QMouseEvent* pEvent)
{
    setFocus();
    m_nLastMouseX = pEvent->x();
    m_nLastMouseY = pEvent->y();
    m_ptMousePress = pEvent->pos();
    m_bMouseDragged = false;
    if (pEvent->button() == Qt::LeftButton && pEvent->modifiers() & Qt::ControlModifier) {
        m_nMouseMode = MouseMode::Band;
        m_nBandStartX = m_nBandEndX = pEvent->x();
        m_nBandStartY = m_nBandEndY = pEvent->y();
    } else if (pEvent->button() == Qt::LeftButton && pEvent->modifiers() & Qt::ShiftModifier) {
        m_nMouseMode = MouseMode::Pan;
        setCursor(Qt::SizeAllCursor);
    } else if (pEvent->button() == Qt::MiddleButton ||
               (pEvent->button() == Qt::LeftButton && m_bMeasuring && pointAt(pEvent->pos()) >= 0)) {
        m_nMouseMode = startMeasuring(pEvent->pos()) ? MouseMode::Measure : MouseMode::None;
    } else if (pEvent->button() == Qt::LeftButton) {
        m_nMouseMode = MouseMode::Rotate;
        store(trackballVector(pEvent->x(), pEvent->y(), width(), height()), m_fTrackball);
        setCursor(Qt::CrossCursor);
    } else if (pEvent->button() == Qt::RightButton) {
        m_nMouseMode = MouseMode::Zoom;
        setCursor(Qt::SizeVerCursor);
    }
}

void ED3DWidget::mouseReleaseEvent(QMouseEvent* pEvent)
{
    const MouseMode mode = m_nMouseMode;
    m_nMouseMode = MouseMode::None;
    setCursor(Qt::ArrowCursor);
    if (mode == MouseMode::Band) {
        finishBand(pEvent->modifiers() & Qt::ShiftModifier);
        update();
    }
    if (mode == MouseMode::Measure) {
        measureTo(pEvent->pos());
    }
    // The menu waits for the release, as a press with the right button may become a zoom.
    if (mode == MouseMode::Zoom && pEvent->button() == Qt::RightButton && !m_bMouseDragged) {
        showMenu(pEvent->globalPos());
    }
    // A band without an area counts as a click, also with Control.
    const bool bClick = mode == MouseMode::Band ? m_nBandStartX == m_nBandEndX || m_nBandStartY == m_nBandEndY
                                                : mode == MouseMode::Rotate || mode == MouseMode::Pan ||
                                                      mode == MouseMode::Measure;
    if (bClick && pEvent->button() == Qt::LeftButton && !m_bMouseDragged) {
        emit pointClicked(this, pointAt(pEvent->pos()), pEvent->modifiers());
    }
}

void ED3DWidget::mouseDoubleClickEvent(QMouseEvent*)
{
    m_nRinged = -1;
    m_anMeasured = {-1, -1};
    clearSelection();
    emit selectionDropped(this);
}

void ED3DWidget::mouseMoveEvent(QMouseEvent* pEvent)
{
    if ((pEvent->pos() - m_ptMousePress).manhattanLength() >= QApplication::startDragDistance()) {
        m_bMouseDragged = true;
    } else if (m_nMouseMode == MouseMode::Zoom && !m_bMouseDragged) {
        return;
    }
    const float fX = float(pEvent->x() - m_nLastMouseX), fY = float(pEvent->y() - m_nLastMouseY);
    const float fWidth = float(std::max(width(), 1)), fHeight = float(std::max(height(), 1));
    m_nLastMouseX = pEvent->x();
    m_nLastMouseY = pEvent->y();
    switch (m_nMouseMode) {
        case MouseMode::Pan:
            m_camera.m_fPanX += 3.f * fX / fWidth;
            m_camera.m_fPanY -= 3.f * fY / fHeight;
            break;
        case MouseMode::Rotate: {
            const Vec3D v = trackballVector(pEvent->x(), pEvent->y(), width(), height());
            const Vec3D last{m_fTrackball[0], m_fTrackball[1], m_fTrackball[2]};
            m_camera.rotateTrackball(last, v);
            store(cross(last, v), m_fTrackballAxis);
            store(v, m_fTrackball);
            break;
        }
        case MouseMode::Zoom:
            m_camera.changeZoom(3.f * fY / fHeight);
            break;
        case MouseMode::Band:
            m_nBandEndX = pEvent->x();
            m_nBandEndY = pEvent->y();
            break;
        case MouseMode::Measure:
            measureTo(pEvent->pos());
            break;
        case MouseMode::None:
            return;
    }
    update();
}

void ED3DWidget::wheelEvent(QWheelEvent* pEvent)
{
    m_camera.changeZoom(-float(pEvent->angleDelta().y()) / float(std::max(height(), 1)));
    pEvent->accept();
    update();
}

void ED3DWidget::keyPressEvent(QKeyEvent* pEvent)
{
    if (pEvent->key() == Qt::Key_A && !pEvent->isAutoRepeat()) {
        m_bGroupKeyHeld = pEvent->modifiers() == Qt::ControlModifier;
    }
    QWidget::keyPressEvent(pEvent);
}

// Control may be let go of before the letter.
void ED3DWidget::keyReleaseEvent(QKeyEvent* pEvent)
{
    if (pEvent->key() != Qt::Key_A) {
        QWidget::keyReleaseEvent(pEvent);
        return;
    }
    const bool bHeld = m_bGroupKeyHeld && pEvent->modifiers() == Qt::NoModifier;
    if (!pEvent->isAutoRepeat()) {
        m_bGroupKeyHeld = false;
    }
    if (bHeld || pEvent->modifiers() == Qt::ControlModifier) {
        addSelectedPeaksAsNewGroup();
    } else {
        QWidget::keyReleaseEvent(pEvent);
    }
}

void ED3DWidget::contextMenuEvent(QContextMenuEvent* pEvent)
{
    if (pEvent->reason() != QContextMenuEvent::Mouse) {
        showMenu(pEvent->globalPos());
    }
}

void ED3DWidget::showMenu(const QPoint& ptGlobal)
{
    auto* pMenu = new QMenu(this);
    pMenu->setAttribute(Qt::WA_DeleteOnClose);
    pMenu->addActions(actions());
    pMenu->popup(ptGlobal);
}

void ED3DWidget::finishBand(bool bAdd)
{
    if (m_nBandStartX == m_nBandEndX || m_nBandStartY == m_nBandEndY) {
        return;
    }
    const QList<int> listPicked = pick();
    m_groups.select(listPicked, bAdd);
    if (listPicked.size() == 1) {
        const Peak3D& peak = m_listPoint.at(listPicked.first());
        emit textMessage(QStringLiteral("ID=%L1, h.k.l.=(%L2,%L3,%L4),xyz=[%L5,%L6,%L7]; I=%L8, d=%L9, "
                                        "No.frame=%L10, xy=(%L11,%L12)")
                             .arg(peak.nID)
                             .arg(peak.dfH, 0, 'f', 2)
                             .arg(peak.dfK, 0, 'f', 2)
                             .arg(peak.dfL, 0, 'f', 2)
                             .arg(peak.fX3D, 0, 'f', 5)
                             .arg(peak.fY3D, 0, 'f', 5)
                             .arg(peak.fZ3D, 0, 'f', 5)
                             .arg(peak.dfIPoint, 0, 'f', 1)
                             .arg(1.0 / peak.dfDStar, 0, 'f', 3)
                             .arg(peak.nFrame + 1)
                             .arg(peak.dfX2D, 0, 'g')
                             .arg(peak.dfY2D, 0, 'g'));
    } else {
        emit textMessage(QStringLiteral("%L1 selected").arg(listPicked.size()));
    }
    updatePointGroups();
    emit selectionChanged(this);
}

QList<int> ED3DWidget::pick()
{
    const double dfRatio = devicePixelRatioF();
    const auto device = [dfRatio](int n) { return int(std::lround(n * dfRatio)); };
    int anViewport[4];
    squareViewport(int(width() * dfRatio), int(height() * dfRatio), m_bKeepAspect, anViewport);
    return pickPoints(cloudVertices(), m_camera,
                      bandRegion(device(m_nBandStartX), device(m_nBandStartY), device(m_nBandEndX),
                                 device(m_nBandEndY), anViewport));
}

}  // namespace tessera
