#include "frameview/baseimgview.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <cmath>
#include <cstdlib>

namespace tessera {

const qint64 g_nWheelPause = 300;  // ms without an angle, after which a new movement begins

BaseImgView::BaseImgView(QWidget* pParent) : QGraphicsView(pParent)
{
    init();
}

BaseImgView::BaseImgView(QGraphicsScene* pScene, QWidget* pParent) : QGraphicsView(pScene, pParent)
{
    init();
}

void BaseImgView::init()
{
    viewport()->setMouseTracking(true);
    // Marks paint beyond their bounding rectangles, so an update by rectangles would leave bits of them.
    setViewportUpdateMode(FullViewportUpdate);
}

void BaseImgView::setScaleFactor(double dfScale)
{
    if (!(dfScale > 0.0) || std::abs(dfScale - scaleFactor()) <= 0.001) {
        return;
    }
    QTransform matrix = QTransform::fromTranslate(transform().dx(), transform().dy());
    matrix.scale(dfScale, dfScale);
    setTransform(matrix);
    emit scaleChanged(dfScale);
}

bool BaseImgView::viewportEvent(QEvent* pEvent)
{
    // Where the platform opens menus on the press, the menu would swallow every drag.
    if (pEvent->type() == QEvent::ContextMenu && contextMenuPolicy() == Qt::ActionsContextMenu &&
        static_cast<QContextMenuEvent*>(pEvent)->reason() == QContextMenuEvent::Mouse &&
        (m_bRightHeld || m_bRightDragged)) {
        m_bMenuPending = m_bRightHeld;
        m_bRightDragged = m_bRightDragged && m_bRightHeld;
        pEvent->accept();
        return true;
    }
    return QGraphicsView::viewportEvent(pEvent);
}

void BaseImgView::mousePressEvent(QMouseEvent* pEvent)
{
    m_bRightHeld = pEvent->button() == Qt::RightButton;
    m_bRightDragged = false;
    m_bMenuPending = false;
    m_ptRightPress = pEvent->pos();
    QGraphicsView::mousePressEvent(pEvent);
}

void BaseImgView::mouseMoveEvent(QMouseEvent* pEvent)
{
    if (m_bRightHeld &&
        (pEvent->pos() - m_ptRightPress).manhattanLength() >= QApplication::startDragDistance()) {
        m_bRightDragged = true;
    }
    QGraphicsView::mouseMoveEvent(pEvent);
}

void BaseImgView::mouseReleaseEvent(QMouseEvent* pEvent)
{
    QGraphicsView::mouseReleaseEvent(pEvent);
    if (pEvent->button() != Qt::RightButton) {
        return;
    }
    const bool bMenu = m_bMenuPending && !m_bRightDragged;
    m_bRightHeld = false;
    m_bMenuPending = false;
    if (bMenu && !actions().isEmpty()) {
        QMenu::exec(actions(), pEvent->globalPos(), nullptr, this);
    }
}

void BaseImgView::wheelEvent(QWheelEvent* pEvent)
{
    pEvent->accept();
    // Alt and tilting wheels deliver the turn on the other axis.
    const QPoint ptDelta = pEvent->angleDelta();
    const int nDelta = ptDelta.y() != 0 ? ptDelta.y() : ptDelta.x();
    // A touch pad marks the ends of a gesture by events that turn nothing.
    if (nDelta == 0 && (pEvent->phase() == Qt::ScrollBegin || pEvent->phase() == Qt::ScrollEnd)) {
        m_clockWheel.invalidate();
        return;
    }
    const int nStep = wheelStep(nDelta, pEvent->phase());
    if (nStep == 0) {
        return;
    }
    const double dfScale = scaleFactor();
    const QPointF ptScene = viewportTransform().inverted().map(pEvent->position());
    if (nStep < 0) {
        emit zoomOut();
    } else {
        emit zoomIn();
    }
    if (scaleFactor() == dfScale) {
        return;
    }
    const QPointF ptMoved = viewportTransform().map(ptScene) - pEvent->position();
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + qRound(ptMoved.x()));
    verticalScrollBar()->setValue(verticalScrollBar()->value() + qRound(ptMoved.y()));
}

/// 1 to zoom in, -1 to zoom out, 0 for neither. An angle of a notch or more is one step. Touch pads and fine
/// wheels send a notch in many small angles: the first of a movement is a step, so that the view answers at
/// once, the others when they have added up to a notch.
int BaseImgView::wheelStep(int nAngle, Qt::ScrollPhase phase)
{
    const int nSign = nAngle < 1 ? -1 : 1;
    if (nAngle == 0 || std::abs(nAngle) >= QWheelEvent::DefaultDeltasPerStep) {
        m_clockWheel.invalidate();
        return nSign;
    }
    const bool bGoesOn = phase != Qt::ScrollBegin && m_clockWheel.isValid() &&
                         m_clockWheel.elapsed() < g_nWheelPause;
    m_clockWheel.start();
    if (!bGoesOn) {
        m_nWheelAngle = 0;
        return nSign;
    }
    m_nWheelAngle += nAngle;
    if (std::abs(m_nWheelAngle) < QWheelEvent::DefaultDeltasPerStep) {
        return 0;
    }
    m_nWheelAngle -= nSign * QWheelEvent::DefaultDeltasPerStep;
    return nSign;
}

}  // namespace tessera
