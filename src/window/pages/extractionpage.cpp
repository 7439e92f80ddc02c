#include "window/pages/extractionpage.h"

#include "records/runparameters.h"
#include "window/pages/controltips.h"
#include "window/pages/pagecontrols.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSpinBox>
#include <QVBoxLayout>

namespace tessera {

ExtractionPage::ExtractionPage(QWidget* pParent) : QWidget(pParent, Qt::Tool)
{
    using Parameters = ExtractionParameters;

    auto* pIntegration = new QGroupBox(tr("2D Intensity Integration"), this);
    m_pSpinWindowRadius = makeSpin(pIntegration, &Parameters::m_nWindowRadius);
    m_pSpinBackgroundSize = makeSpin(pIntegration, &Parameters::m_nBackgroundSize);
    auto* pIntegrationLayout = new QGridLayout(pIntegration);
    pIntegrationLayout->addWidget(new QLabel(tr("Window Radius"), pIntegration), 0, 0);
    pIntegrationLayout->addWidget(m_pSpinWindowRadius, 0, 1);
    pIntegrationLayout->addWidget(new QLabel(tr("Background Size"), pIntegration), 1, 0);
    pIntegrationLayout->addWidget(m_pSpinBackgroundSize, 1, 1);
    pIntegrationLayout->setColumnStretch(1, 1);

    auto* pPosition = new QGroupBox(tr("Reflection position from"), this);
    m_pRadioOrientationMatrix = new QRadioButton(tr("Orientation Matrix"), pPosition);
    m_pRadioIndexedReflections = new QRadioButton(tr("Indexed Reflections"), pPosition);
    m_pRadioOrientationMatrix->setChecked(true);
    m_pSpinResolutionLimit = makeSpin(pPosition, &Parameters::m_dfResolutionLimit);
    m_pSpinResolutionLimit->setGroupSeparatorShown(true);
    auto* pPositionLayout = new QGridLayout(pPosition);
    pPositionLayout->addWidget(m_pRadioOrientationMatrix, 0, 0);
    pPositionLayout->addWidget(new QLabel(tr("Resolution(d*) limit"), pPosition), 0, 1);
    pPositionLayout->addWidget(m_pSpinResolutionLimit, 0, 2);
    pPositionLayout->addWidget(m_pRadioIndexedReflections, 1, 0);
    pPositionLayout->setColumnStretch(2, 1);

    m_pCheckShowEstimated = new QCheckBox(tr("Show Estimated Peak Position"), this);

    m_pButtonRun = makeRunButton(this, tr("Run"), tr("Run intensity extraction"), ButtonText::Bold);
    m_pButtonRun->setToolTip(tr("Refines the positions of the indexed peaks on the frames"));

    explain(m_pRadioOrientationMatrix,
            tr("Circles where the cell in force predicts reflections on the frame in view."));
    explain(m_pRadioIndexedReflections, tr("Circles on the indexed peaks of the frame in view."));
    explain(m_pCheckShowEstimated,
            tr("Draws the circles. With a good cell, beam and axis they lie on the peaks; if "
               "they lie beside them, turn \"Rotation Axis At\"."));
    explain(m_pButtonRun, tr("Fits the positions of the indexed peaks on the frames and keeps them."));
    auto* pLayout = new QVBoxLayout(this);
    for (QWidget* pWidget :
         {static_cast<QWidget*>(pIntegration), static_cast<QWidget*>(pPosition),
          static_cast<QWidget*>(m_pCheckShowEstimated), static_cast<QWidget*>(m_pButtonRun)}) {
        pLayout->addWidget(pWidget);
    }
    pLayout->addStretch(1);
}

bool ExtractionPage::event(QEvent* pEvent)
{
    // A status tip goes no further up than to a window, such as this page, so it is handed on.
    if (pEvent->type() == QEvent::StatusTip && parentWidget()) {
        return QCoreApplication::sendEvent(parentWidget(), pEvent);
    }
    return QWidget::event(pEvent);
}

void ExtractionPage::showBeside()
{
    const QWidget* pMain = parentWidget();
    if (!m_bPlaced && pMain) {
        m_bPlaced = true;
        const QRect rectMain = pMain->frameGeometry();
        const QRect rectScreen = screen() ? screen()->availableGeometry() : rectMain;
        const QSize sizeOwn = sizeHint();
        move(qMax(rectScreen.left(), qMin(rectMain.right() + 1, rectScreen.right() - sizeOwn.width())),
             rectMain.top() + (rectMain.height() - sizeOwn.height()) / 2);
    }
    show();
    raise();
    activateWindow();
}

}  // namespace tessera
