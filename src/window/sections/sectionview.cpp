#include "window/sections/sectionview.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

namespace tessera {

SectionView::SectionView(QWidget* pParent) : QWidget(pParent)
{
    setMouseTracking(true);
}

void SectionView::showSection(const ReciprocalSection& section, const SectionLook& look)
{
    m_layout = sectionLayout(section, look);
    m_image = drawSection(section, look);
    m_strText = m_image.isNull() ? tr("There is no memory for the picture.") : QString();
    resize(sizeHint());
    updateGeometry();
    update();
}

void SectionView::showText(const QString& strText)
{
    m_image = QImage();
    m_ptRing.reset();
    m_strText = strText;
    resize(sizeHint());
    updateGeometry();
    update();
}

void SectionView::ring(const std::optional<QPointF>& ptSection)
{
    m_ptRing = ptSection;
    update();
}

QSize SectionView::sizeHint() const
{
    return m_image.isNull() ? QSize(400, 300) : m_image.size();
}

bool SectionView::isOnField(const QPoint& pt) const
{
    return !m_image.isNull() && m_layout.rcField.contains(pt);
}

void SectionView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (m_image.isNull()) {
        painter.drawText(rect().adjusted(20, 20, -20, -20), Qt::AlignCenter | Qt::TextWordWrap, m_strText);
        return;
    }
    painter.drawImage(0, 0, m_image);
    if (m_ptRing) {
        const double dfRadius = 12;  // pixels of the screen, outside of any spot
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(220, 0, 140), 2));
        painter.drawEllipse(m_layout.toPicture(*m_ptRing), dfRadius, dfRadius);
    }
}

void SectionView::mouseMoveEvent(QMouseEvent* pEvent)
{
    if (isOnField(pEvent->pos())) {
        emit pointed(m_layout.toSection(QPointF(pEvent->pos()) + QPointF(0.5, 0.5)));
    } else {
        emit left();
    }
}

void SectionView::mousePressEvent(QMouseEvent* pEvent)
{
    m_ptPressed.reset();
    if (pEvent->button() == Qt::LeftButton && isOnField(pEvent->pos())) {
        m_ptPressed = pEvent->pos();
    }
}

void SectionView::mouseReleaseEvent(QMouseEvent* pEvent)
{
    if (pEvent->button() == Qt::LeftButton && m_ptPressed && isOnField(pEvent->pos()) &&
        (pEvent->pos() - *m_ptPressed).manhattanLength() < QApplication::startDragDistance()) {
        emit clicked(m_layout.toSection(QPointF(pEvent->pos()) + QPointF(0.5, 0.5)));
    }
    m_ptPressed.reset();
}

void SectionView::leaveEvent(QEvent*)
{
    emit left();
}

void SectionView::wheelEvent(QWheelEvent* pEvent)
{
    if (pEvent->modifiers() & Qt::ControlModifier) {
        emit zoomed(pEvent->angleDelta().y() > 0 ? 1 : -1);
        pEvent->accept();
    } else {
        pEvent->ignore();  // the area scrolls
    }
}

}  // namespace tessera
