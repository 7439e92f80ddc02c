#include "window/framepreview.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr double g_dfDegree = 0.017453292519943295;
constexpr double g_dfCross = 9, g_dfRing = 7, g_dfArrowHead = 11;  // of the marks, pixels of the screen

void drawAxis(QPainter& painter, const QPointF& ptBeam, double dfAxis, double dfLength)
{
    // Rows count downwards on the screen, angles upwards.
    const QPointF ptAlong(std::cos(dfAxis * g_dfDegree), -std::sin(dfAxis * g_dfDegree));
    const QPointF ptAcross(-ptAlong.y(), ptAlong.x());
    const QPointF ptEnd = ptBeam + ptAlong * dfLength;
    painter.setPen(QPen(Qt::cyan, 1.5, Qt::DashLine));
    painter.drawLine(ptBeam - ptAlong * dfLength, ptEnd);
    painter.setPen(QPen(Qt::cyan, 1.5));
    painter.drawLine(ptEnd, ptEnd - g_dfArrowHead * (ptAlong + ptAcross * 0.5));
    painter.drawLine(ptEnd, ptEnd - g_dfArrowHead * (ptAlong - ptAcross * 0.5));
}

}  // namespace

FramePreview::FramePreview(QWidget* pParent) : QWidget(pParent)
{
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setSizePolicy(policy);
}

void FramePreview::setLook(const FrameLook& look)
{
    m_look = look;
    update();
}

void FramePreview::setToldBeam(const std::optional<QPointF>& ptBeam)
{
    m_ptToldBeam = ptBeam;
    update();
}

void FramePreview::setAxis(const std::optional<double>& dfAxis)
{
    m_dfAxis = dfAxis;
    update();
}

void FramePreview::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Mid));
    if (m_look.image.isNull()) {
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap,
                         m_look.strProblem);
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const double dfScale = std::min(double(width()) / m_look.size.width(),
                                    double(height()) / m_look.size.height());
    const QSizeF size = QSizeF(m_look.size) * dfScale;
    const QRectF rcFrame(QPointF((width() - size.width()) / 2, (height() - size.height()) / 2), size);
    painter.drawImage(rcFrame, m_look.image);
    painter.setClipRect(rcFrame);
    // The centre of the first pixel is (0, 0).
    const auto onScreen = [&](const QPointF& pt) {
        return rcFrame.topLeft() + (pt + QPointF(0.5, 0.5)) * dfScale;
    };
    const QPointF ptMiddle((m_look.size.width() - 1) / 2.0, (m_look.size.height() - 1) / 2.0);
    const QPointF ptAxis = onScreen(m_look.ptBeam ? *m_look.ptBeam : m_ptToldBeam.value_or(ptMiddle));
    if (m_dfAxis) {
        drawAxis(painter, ptAxis, *m_dfAxis, 0.47 * std::min(size.width(), size.height()));
    }
    if (m_ptToldBeam) {
        painter.setPen(QPen(QColor(255, 160, 0), 1.5));
        painter.drawEllipse(onScreen(*m_ptToldBeam), g_dfRing, g_dfRing);
    }
    if (m_look.ptBeam) {
        const QPointF pt = onScreen(*m_look.ptBeam);
        painter.setPen(QPen(Qt::green, 1.5));
        painter.drawLine(pt - QPointF(g_dfCross, 0), pt + QPointF(g_dfCross, 0));
        painter.drawLine(pt - QPointF(0, g_dfCross), pt + QPointF(0, g_dfCross));
    }
}

}  // namespace tessera
