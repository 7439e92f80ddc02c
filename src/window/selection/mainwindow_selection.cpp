// MainWindow: the one selection of its views, and the guides on the frame, which have controllers of their
// own.
#include "frameview/baseimgview.h"
#include "frameview/originalimgscene.h"
#include "view3d/ed3dwidget.h"
#include "window/frames/curveplot.h"
#include "window/frameview/frameguides.h"
#include "window/integration/integrationcontroller.h"
#include "window/mainwindow.h"
#include "window/reciprocal/peaktableview.h"
#include "window/selection/selectioncontroller.h"
#include "window/tabwidget.h"

#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QStatusBar>

namespace tessera {

const char g_szRings[] = "FrameView/ResolutionRings";

void MainWindow::createFrameGuides()
{
    FrameGuidesHost host;
    host.pData = &m_dataSet;
    host.pMapping = &m_mapping;
    host.pView = m_pFrameView;
    host.pScene = m_pFrameScene;
    host.pStatusBar = statusBar();
    host.fnFrameInView = [this] {
        return m_dataSet.m_vecFrameImage.empty() || isPumping() ? -1 : m_pFrameSpin->value() - 1;
    };
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    host.bRings = pSettings->value(QLatin1String(g_szRings), false).toBool();
    host.fnKeepRings = [](bool bShow) {
        const std::unique_ptr<QSettings> pKept(makeSettings());
        pKept->setValue(QLatin1String(g_szRings), bShow);
    };
    m_pGuides = new FrameGuides(host, this);
    m_pFrameView->addAction(m_pGuides->ringsAction());
    connect(this, &MainWindow::frameLoaded, m_pGuides, [this] { m_nFrameToShow = 0; });
    connect(m_pView3DRaw, &ED3DWidget::pointDisplayDataChanged, m_pGuides, &FrameGuides::renew);
}

void MainWindow::createSelection()
{
    createFrameGuides();
    SelectionHost host;
    host.pData = &m_dataSet;
    host.pRaw = m_pView3DRaw;
    host.pMerged = m_pView3DMerged;
    host.pTable = m_pPeakTableView;
    host.pCurve = m_pCurvePlot;
    host.pFrame = m_pGuides;
    host.fnBusy = [this] { return isPumping(); };
    host.fnRawHoldsPeaks = [this] { return m_rawGroups.holdsPeaks(); };
    host.fnFrameInView = [this] {
        return m_dataSet.m_vecFrameImage.empty() || isPumping() ? -1 : m_pFrameSpin->value() - 1;
    };
    host.fnFrameScale = [this] { return m_pFrameView->scaleFactor(); };
    host.fnShowFrame = [this](int nFrame) { showChosenFrame(nFrame); };
    host.fnShowCurve = [this](int nReflection) {
        if (m_pCurvePlot->reflection() != nReflection) {
            showPeakInCurve(nReflection);
        }
    };
    host.fnSay = [this](const QString& strText) { statusBarMessage(strText); };
    host.fnDiscAt = [this](const QPointF& ptRaw) {
        return m_pIntegration->indicesOfDiscAt(ptRaw + QPointF(0.5, 0.5));
    };
    host.fnShowProfile = [this](const std::array<int, 3>& anIndex, int nFrame) {
        m_pIntegration->showProfileOf(anIndex, nFrame);
    };
    m_pSelection = new SelectionController(host, this);
    for (QAction* pMenuAction : menuBar()->actions()) {
        if (pMenuAction->text() == QStringLiteral("&View")) {
            pMenuAction->menu()->addSeparator();
            pMenuAction->menu()->addAction(m_pGuides->ringsAction());
            QMenu* pChosen = pMenuAction->menu()->addMenu(tr("&Chosen Reflection"));
            pChosen->addActions(m_pSelection->actions());
        }
    }
}

/// The tab in front stays: if it is not that of the frames, the frame is shown when that tab is chosen.
void MainWindow::showChosenFrame(int nFrame)
{
    if (nFrame < 0 || nFrame >= m_dataSet.m_listFrameFile.size()) {
        return;
    }
    if (m_pTabWidget->currentWidget() != m_pFrameView) {
        m_nFrameToShow = nFrame + 1;
    } else if (m_pFrameSpin->value() != nFrame + 1 || m_dataSet.m_vecFrameImage.empty()) {
        switchToImgIndex(nFrame + 1);
    }
}

void MainWindow::showFrameGuides()
{
    m_pGuides->renew();
    m_pSelection->checkData();
    m_pSelection->ringSpots();
}

}  // namespace tessera
