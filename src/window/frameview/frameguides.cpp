#include "window/frameview/frameguides.h"

#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "reciprocal/framereading.h"
#include "window/pages/controltips.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLocale>
#include <QMouseEvent>
#include <QStatusBar>

#include <cmath>

namespace tessera {

namespace {

QString fixed(double df, int nDecimals)
{
    return QLocale::system().toString(df, 'f', nDecimals);
}

/// On the beam itself there is no spacing.
QString spacingText(double dfReciprocal)
{
    return dfReciprocal > 0 ? QStringLiteral("d %1 Å").arg(fixed(1 / dfReciprocal, 3))
                            : QStringLiteral("d ∞");
}

QString readingText(const FrameReading& reading)
{
    QString strText = QStringLiteral("%1   d* %2 Å⁻¹   ∠axis %3°")
                          .arg(spacingText(reading.dfDStar), fixed(reading.dfDStar, 4),
                               fixed(reading.dfAxisAngle, 1));
    if (reading.indices) {
        const auto& adf = *reading.indices;
        strText +=
            QStringLiteral("   hkl %1 %2 %3").arg(fixed(adf[0], 1), fixed(adf[1], 1), fixed(adf[2], 1));
    }
    return strText;
}

}  // namespace

FrameGuides::FrameGuides(const FrameGuidesHost& host, QObject* pParent)
    : QObject(pParent),
      m_host(host),
      m_overlay(*host.pScene),
      m_pRings(new QAction(tr("Resolution Rings"), this)),
      m_pLabel(new QLabel)
{
    m_pRings->setCheckable(true);
    m_pRings->setChecked(m_host.bRings);
    m_pRings->setStatusTip(tr("Show rings of equal resolution on the frame"));
    explain(m_pRings, tr("Draws rings of equal d* on the frame, with d in Å beside them: as round as "
                         "\"Stretching\" and \"Lens Distortion\" have them. The last one is at the greatest "
                         "d* of \"3D Peak Merging\", or at the edge of the frame."));
    connect(m_pRings, &QAction::toggled, this, [this](bool bShow) {
        m_host.fnKeepRings(bShow);
        renew();
    });
    m_pLabel->setObjectName(QStringLiteral("frameReading"));
    explain(m_pLabel, tr("The place under the pointer: spacing d in Å, d* in Å⁻¹, angle to the rotation axis "
                         "on the frame, and the indices of the unit cell there."));
    m_pLabel->hide();
    m_host.pStatusBar->addPermanentWidget(m_pLabel);
    connect(m_host.pScene, &BaseImgScene::mouseMoving, this, &FrameGuides::readPlace);
    m_host.pView->viewport()->installEventFilter(this);
}

void FrameGuides::scrollTo(const QPointF& ptRaw)
{
    const double dfAround = 20;  // pixels of the frame
    m_host.pView->ensureVisible(
        QRectF(ptRaw.x() - dfAround, ptRaw.y() - dfAround, 2 * dfAround, 2 * dfAround));
}

void FrameGuides::readPlace(const QPointF& ptScene)
{
    m_ptRead = ptScene;
    const int nFrame = m_host.fnFrameInView();
    const QSize size = m_host.pScene->imageSize();
    std::optional<FrameReading> reading;
    if (nFrame >= 0 && QRectF(QPointF(), size).contains(ptScene)) {
        reading = readFramePlace(*m_host.pData, m_host.pMapping->m_bApplyStretching, nFrame,
                                 ptScene - QPointF(0.5, 0.5));
    }
    m_pLabel->setText(reading ? readingText(*reading) : QString());
    m_pLabel->setVisible(reading.has_value());
}

void FrameGuides::renew()
{
    const int nFrame = m_host.fnFrameInView();
    m_overlay.hideDistance();
    m_ptMeasureFrom.reset();
    std::vector<ResolutionRing> vecRing;
    if (m_pRings->isChecked() && nFrame >= 0) {
        vecRing = resolutionRings(*m_host.pData, m_host.pMapping->m_bApplyStretching, nFrame,
                                  m_host.pScene->imageSize(), m_host.pMapping->m_dfResolutionMax);
    }
    m_overlay.showRings(vecRing);
    if (m_pLabel->isVisible()) {
        readPlace(m_ptRead);
    }
}

void FrameGuides::clear()
{
    m_overlay.showRings({});
    m_overlay.showSpots({}, {});
    m_overlay.hideDistance();
    m_ptMeasureFrom.reset();
    m_pLabel->clear();
    m_pLabel->hide();
}

QPointF FrameGuides::rawPlace(const QPoint& ptViewport) const
{
    // Whole numbers are corners of pixels in the scene, centres in raw pixels.
    return m_host.pView->viewportTransform().inverted().map(QPointF(ptViewport)) - QPointF(0.5, 0.5);
}

void FrameGuides::measureTo(const QPoint& ptViewport)
{
    const QPointF ptTo = rawPlace(ptViewport);
    const auto distance = distanceOnFrame(*m_host.pData, m_host.pMapping->m_bApplyStretching,
                                          m_host.fnFrameInView(), *m_ptMeasureFrom, ptTo);
    QString strText = tr("%1 pixels").arg(fixed(QLineF(*m_ptMeasureFrom, ptTo).length(), 1));
    if (distance) {
        strText += QStringLiteral("\n%1 Å⁻¹\n%2")
                       .arg(fixed(distance->dfReciprocal, 4), spacingText(distance->dfReciprocal));
    }
    m_overlay.showDistance({*m_ptMeasureFrom, ptTo}, strText);
}

/// Drags with Shift are kept from the view, which would move the frame by them. All else goes on to it.
bool FrameGuides::eventFilter(QObject* pObject, QEvent* pEvent)
{
    if (pEvent->type() == QEvent::Leave) {
        readPlace({-1, -1});
        return QObject::eventFilter(pObject, pEvent);
    }
    if (pEvent->type() != QEvent::MouseButtonPress && pEvent->type() != QEvent::MouseMove &&
        pEvent->type() != QEvent::MouseButtonRelease) {
        return QObject::eventFilter(pObject, pEvent);
    }
    const auto* pMouse = static_cast<const QMouseEvent*>(pEvent);
    const bool bLeft = pMouse->button() == Qt::LeftButton;
    if (pEvent->type() == QEvent::MouseButtonPress) {
        m_overlay.hideDistance();
        m_ptMeasureFrom.reset();
        m_ptPressed.reset();
        if (bLeft && m_host.fnFrameInView() >= 0) {
            m_ptPressed = pMouse->pos();
            if (pMouse->modifiers() & Qt::ShiftModifier) {
                m_ptMeasureFrom = rawPlace(pMouse->pos());
                return true;
            }
        }
        return QObject::eventFilter(pObject, pEvent);
    }
    const bool bDragged = m_ptPressed && (pMouse->pos() - *m_ptPressed).manhattanLength() >=
                                             QApplication::startDragDistance();
    const bool bMeasures = m_ptMeasureFrom.has_value();
    if (bMeasures && m_host.fnFrameInView() >= 0 && (bDragged || m_overlay.showsDistance())) {
        measureTo(pMouse->pos());
    }
    if (pEvent->type() == QEvent::MouseButtonRelease && bLeft) {
        if (m_ptPressed && !bDragged && !m_overlay.showsDistance()) {
            const QPointF ptRaw = rawPlace(pMouse->pos());
            const Qt::KeyboardModifiers modifiers = pMouse->modifiers();
            QMetaObject::invokeMethod(
                this, [this, ptRaw, modifiers] { emit clicked(ptRaw, modifiers); }, Qt::QueuedConnection);
        }
        m_ptPressed.reset();
        m_ptMeasureFrom.reset();
    }
    return bMeasures || QObject::eventFilter(pObject, pEvent);
}

}  // namespace tessera
