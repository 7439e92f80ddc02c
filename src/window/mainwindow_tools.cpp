// MainWindow: the menu "Tools".
#include "window/mainwindow.h"

#include "view3d/ed3dwidget.h"
#include "window/crystal/geometrycontrol.h"
#include "window/pages/extractionpage.h"
#include "window/windowactions.h"

#include <QMenu>
#include <QMenuBar>
#include <QSettings>

namespace tessera {

void MainWindow::createToolsMenu()
{
    WindowActions& actions = *m_pActions;
    QMenu* pMenu = menuBar()->addMenu(QStringLiteral("&Tools"));
    const auto add = [&](QMenu* pTo, QAction* pAction, auto slot) {
        connect(pAction, &QAction::triggered, this, slot);
        actions.setReady(pAction);
        pTo->addAction(pAction);
    };
    pMenu->addAction(actions.m_pSolve);
    pMenu->addSeparator();
    add(pMenu, actions.m_pExtractionWindow, [this] { m_pExtractionPage->showBeside(); });
    add(pMenu, actions.m_pExtractIntensity, [this] { extractIntensity(m_dataSet.m_vecPeakIndexedOnFrame); });
    pMenu->addSeparator();
    add(pMenu, actions.m_pFitDirectBeam, &MainWindow::fitDirectBeam);
    add(pMenu, actions.m_pRefineDirectBeam, &MainWindow::refineDirectBeamPosition);
    add(pMenu, actions.m_pTestRotationAxis, &MainWindow::testRotationAxis);
    add(pMenu, actions.m_pFindRotationAxis, &MainWindow::findRotationAxis);
    pMenu->addSeparator();
    add(pMenu, actions.m_pLattices, &MainWindow::showLattices);
    add(pMenu, actions.m_pRefineGeometry, [this] { m_pGeometry->showDialog(); });
    add(pMenu, actions.m_pRefineBasis, &MainWindow::refineBasisVectors);
    add(pMenu, actions.m_pRefineFrameNo, &MainWindow::refineUnitCellUsingFrameNo);
    pMenu->addAction(actions.m_pSections);
    pMenu->addAction(actions.m_pMergeCrystals);
    pMenu->addSeparator();
    add(pMenu, actions.m_pExportPeaks, &MainWindow::exportPeak3D);

    QMenu* pTests = pMenu->addMenu(QStringLiteral("Test &Runs"));
    add(pTests, actions.m_pTestFindCubic, &MainWindow::testFindCubicCell);
    add(pTests, actions.m_pTestRefineCubic, &MainWindow::refineCubicUnitCell);
    add(pTests, actions.m_pTestStretching, &MainWindow::testStreching);
    add(pTests, actions.m_pTestPlane, &MainWindow::test2DIndexing);
    add(pTests, actions.m_pTestIndexing, &MainWindow::testIndexing);
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    pTests->menuAction()->setVisible(pSettings->value(QStringLiteral("showTestRuns"), false).toBool());

    pMenu->addSeparator();
    add(pMenu, actions.m_pStopRun, [this] {
        if (isPumping()) {
            m_bRunning = m_bHuntingRunning = m_bSolving = m_bUpdating = false;
        }
    });
    connect(pMenu, &QMenu::aboutToShow, this, [this] {
        m_pActions->setInForce(m_pActions->m_pStopRun, m_bRunning || m_bHuntingRunning || m_bSolving);
        m_pActions->setInForce(m_pActions->m_pExportPeaks, !m_pView3DCurrent.isNull());
    });
}

}  // namespace tessera
