#include "frameview/baseimgview.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QWheelEvent>

#include <cmath>

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
    if (!(dfScale > 0.0) || std::abs(dfScale - scaleFactor()) <= 0.001)
        return;
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
        (pEvent->pos() - m_ptRightPress).manhattanLength() >= QApplication::startDragDistance())
        m_bRightDragged = true;
    QGraphicsView::mouseMoveEvent(pEvent);
}

void BaseImgView::mouseReleaseEvent(QMouseEvent* pEvent)
{
    QGraphicsView::mouseReleaseEvent(pEvent);
    if (pEvent->button() != Qt::RightButton)
        return;
    const bool bMenu = m_bMenuPending && !m_bRightDragged;
    m_bRightHeld = false;
    m_bMenuPending = false;
    if (bMenu && !actions().isEmpty())
        QMenu::exec(actions(), pEvent->globalPos(), nullptr, this);
}

void BaseImgView::wheelEvent(QWheelEvent* pEvent)
{
    pEvent->accept();
    // Alt and tilting wheels deliver the turn on the other axis.
    const QPoint ptDelta = pEvent->angleDelta();
    const int nDelta = ptDelta.y() != 0 ? ptDelta.y() : ptDelta.x();
    // A touch pad marks the ends of a gesture by events that turn nothing.
    if (nDelta == 0 && (pEvent->phase() == Qt::ScrollBegin || pEvent->phase() == Qt::ScrollEnd))
        return;
    if (nDelta < 1)
        emit zoomOut();
    else
        emit zoomIn();
}
