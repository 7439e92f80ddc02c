#include "window/frames/contrasthistogram.h"

#include <QKeyEvent>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr double g_dfMargin = 6,
                 g_dfHead = 5;  // pixels: beside the plot, and half the width of a handle's head
constexpr double g_dfKeyStep = 0.01, g_dfKeyLeap = 0.1;
constexpr double g_dfLeastApart = 0.002;  // of the axis: the contrast never turns round

QString valueText(double dfValue)
{
    const bool bLarge = std::abs(dfValue) >= 9999.5;
    return QLocale().toString(dfValue, bLarge ? 'f' : 'g', bLarge ? 0 : 4);
}

}  // namespace

ContrastHistogram::ContrastHistogram(QWidget* pParent) : QWidget(pParent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCursor(Qt::SizeHorCursor);
}

void ContrastHistogram::setHistogram(const ViewHistogram& histogram)
{
    m_histogram = histogram;
    update();
}

void ContrastHistogram::setLimits(double dfLow, double dfHigh)
{
    m_dfLow = dfLow;
    m_dfHigh = dfHigh;
    update();
}

QRectF ContrastHistogram::plot() const
{
    const double dfText = fontMetrics().height();
    return QRectF(rect()).adjusted(g_dfMargin, 3, -g_dfMargin, -dfText - g_dfHead - 3);
}

double ContrastHistogram::handleX(bool bHigh) const
{
    return plot().left() + m_histogram.axis.place(bHigh ? m_dfHigh : m_dfLow) * plot().width();
}

void ContrastHistogram::paintBars(QPainter& painter) const
{
    const QRectF rcPlot = plot();
    const auto& vecCount = m_histogram.vecCount;
    const int nMost = vecCount.empty() ? 0 : *std::max_element(vecCount.begin(), vecCount.end());
    if (nMost == 0) {
        return;
    }
    const double dfWidth = rcPlot.width() / double(vecCount.size());
    for (std::size_t i = 0; i < vecCount.size(); ++i) {
        const double dfHeight = rcPlot.height() * std::log1p(vecCount[i]) / std::log1p(nMost);
        // A little wider than a bin, or gaps show where their edges are rounded to pixels.
        painter.fillRect(
            QRectF(rcPlot.left() + double(i) * dfWidth, rcPlot.bottom() - dfHeight, dfWidth + 0.5, dfHeight),
            palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Text));
    }
}

void ContrastHistogram::paintHandle(QPainter& painter, bool bHigh) const
{
    const double dfX = handleX(bHigh), dfY = plot().bottom();
    const QColor color = palette().color(QPalette::Highlight);
    painter.setPen(QPen(color, hasFocus() && bHigh == m_bHigh ? 2.5 : 1.5));
    painter.drawLine(QPointF(dfX, plot().top()), QPointF(dfX, dfY));
    // Filled with the grey that the value is shown in.
    painter.setBrush(bHigh ? Qt::white : Qt::black);
    painter.drawPolygon(
        QPolygonF({{dfX, dfY}, {dfX - g_dfHead, dfY + g_dfHead + 2}, {dfX + g_dfHead, dfY + g_dfHead + 2}}));
}

void ContrastHistogram::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRectF rcPlot = plot();
    painter.fillRect(rcPlot, palette().color(QPalette::Base));
    QColor colorRange = palette().color(QPalette::Highlight);
    colorRange.setAlpha(50);
    painter.fillRect(QRectF(QPointF(handleX(false), rcPlot.top()), QPointF(handleX(true), rcPlot.bottom())),
                     colorRange);
    paintBars(painter);
    if (m_histogram.vecCount.empty()) {
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    paintHandle(painter, !m_bHigh);
    paintHandle(painter, m_bHigh);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(palette().color(QPalette::WindowText));
    const QRectF rcText(rcPlot.left(), rcPlot.bottom() + g_dfHead + 2, rcPlot.width(),
                        height() - rcPlot.bottom() - g_dfHead - 2);
    painter.drawText(rcText, Qt::AlignLeft | Qt::AlignVCenter, valueText(m_histogram.axis.first()));
    painter.drawText(rcText, Qt::AlignRight | Qt::AlignVCenter, valueText(m_histogram.axis.last()));
    if (m_histogram.axis.isLogarithmic()) {
        painter.drawText(rcText, Qt::AlignCenter, tr("log scale"));
    }
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.backgroundColor = palette().color(QPalette::Window);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void ContrastHistogram::moveHandle(double dfPlace)
{
    const CValueAxis& axis = m_histogram.axis;
    if (m_histogram.vecCount.empty()) {
        return;
    }
    if (m_bHigh) {
        m_dfHigh = axis.value(std::max(dfPlace, axis.place(m_dfLow) + g_dfLeastApart));
    } else {
        m_dfLow = axis.value(std::min(dfPlace, axis.place(m_dfHigh) - g_dfLeastApart));
    }
    update();
    if (m_dfLow < m_dfHigh) {
        emit limitsChanged(m_dfLow, m_dfHigh);
    }
}

void ContrastHistogram::mousePressEvent(QMouseEvent* pEvent)
{
    if (pEvent->button() != Qt::LeftButton || m_histogram.vecCount.empty()) {
        return;
    }
    const double dfX = pEvent->localPos().x();
    const double dfToLow = std::abs(dfX - handleX(false)), dfToHigh = std::abs(dfX - handleX(true));
    // Of two handles in one place the one on whose side the pointer is.
    m_bHigh = dfToHigh < dfToLow || (dfToHigh == dfToLow && dfX >= handleX(true));
    m_dfGrip = handleX(m_bHigh) - dfX;
    m_bDragging = true;
    update();
}

void ContrastHistogram::mouseMoveEvent(QMouseEvent* pEvent)
{
    if (m_bDragging && plot().width() > 0) {
        moveHandle((pEvent->localPos().x() + m_dfGrip - plot().left()) / plot().width());
    }
}

void ContrastHistogram::mouseReleaseEvent(QMouseEvent*)
{
    m_bDragging = false;
}

void ContrastHistogram::mouseDoubleClickEvent(QMouseEvent* pEvent)
{
    m_bDragging = false;
    if (pEvent->button() == Qt::LeftButton) {
        emit automaticWanted();
    }
}

void ContrastHistogram::keyPressEvent(QKeyEvent* pEvent)
{
    const double dfStep = pEvent->modifiers() & Qt::ControlModifier ? g_dfKeyLeap : g_dfKeyStep;
    const double dfPlace = m_histogram.axis.place(m_bHigh ? m_dfHigh : m_dfLow);
    switch (pEvent->key()) {
        case Qt::Key_Left:
            return moveHandle(dfPlace - dfStep);
        case Qt::Key_Right:
            return moveHandle(dfPlace + dfStep);
        case Qt::Key_Up:
        case Qt::Key_Down:
            m_bHigh = pEvent->key() == Qt::Key_Up;
            return update();
        case Qt::Key_Return:
        case Qt::Key_Enter:
            emit automaticWanted();
            return;
        default:
            QWidget::keyPressEvent(pEvent);
    }
}

}  // namespace tessera
