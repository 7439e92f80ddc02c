// MainWindow: its actions, menus, tool bar and status bar.
#include "frameview/originalimgscene.h"
#include "window/mainwindow.h"
#include "window/pages/controltips.h"
#include "window/windowactions.h"

#include <QApplication>
#include <QComboBox>
#include <QDockWidget>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QSlider>
#include <QSpinBox>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QWhatsThis>

namespace tessera {

void MainWindow::createActions()
{
    m_pActions = new WindowActions(this);
    const auto connectAction = [this](QAction* pAction, auto pSlot) {
        connect(pAction, &QAction::triggered, this, pSlot);
        m_pActions->setReady(pAction);
    };
    connectAction(m_pActions->m_pNewProject, &MainWindow::newProject);
    connectAction(m_pActions->m_pSolve, &MainWindow::solve);
    connectAction(m_pActions->m_pOpen, &MainWindow::open);
    connectAction(m_pActions->m_pFrames, &MainWindow::chooseFrames);
    connectAction(m_pActions->m_pClose, &MainWindow::closeDataSet);
    connectAction(m_pActions->m_pSaveCurrent, &MainWindow::saveCurrent);
    connectAction(m_pActions->m_pSaveSeries, &MainWindow::saveSeries);
    connectAction(m_pActions->m_pMovieFrames, &MainWindow::grab3DMovieFrames);
    connectAction(m_pActions->m_pScaledFrames, &MainWindow::exportBinnedFrames);
    connectAction(m_pActions->m_pReciprocalVolume, &MainWindow::export3DReciprocalVolmue);
    connectAction(m_pActions->m_pSmvImages, &MainWindow::exportSMVImages);
    connectAction(m_pActions->m_pOtherPrograms, &MainWindow::exportForOtherPrograms);
    connectAction(m_pActions->m_pReport, &MainWindow::saveReport);
    connectAction(m_pActions->m_pExit, &MainWindow::close);
    connectAction(m_pActions->m_pCopyWindow, &MainWindow::copyWindow);
    connectAction(m_pActions->m_pZoomIn, &MainWindow::zoomIn);
    connectAction(m_pActions->m_pZoomOut, &MainWindow::zoomOut);
    connectAction(m_pActions->m_pGuide, &MainWindow::showGuide);
    connectAction(m_pActions->m_pAbout, &MainWindow::about);
    connectAction(m_pActions->m_pShowPeakLabels, &MainWindow::enableShowPeaks);
    connectAction(m_pActions->m_pGroupReset, &MainWindow::removeSelectedPeakGroups);
    connectAction(m_pActions->m_pGroupMerge, &MainWindow::mergeSelectedPeakGroups);
    connectAction(m_pActions->m_pGroupResetAll, &MainWindow::resetSelectedPeakGroups);
    connectAction(m_pActions->m_pGroupExport, &MainWindow::exportSelectedPeak3D);
    for (QAction* pAction : qAsConst(m_pActions->m_listRecent)) {
        connectAction(pAction, &MainWindow::openRecentFile);
    }
    connect(m_pActions->m_pAboutQt, &QAction::triggered, qApp, &QApplication::aboutQt);
    m_pActions->setReady(m_pActions->m_pAboutQt);
    connectChoices();
}

/// The palettes, and the sizes of the reference region.
void MainWindow::connectChoices()
{
    // The state and not the click counts, so that a run can check an action as well.
    for (QAction* pAction : qAsConst(m_pActions->m_listPalette)) {
        connect(pAction, &QAction::toggled, this, [this](bool bOn) {
            if (bOn) {
                paletteChanged();
            }
        });
        m_pActions->setReady(pAction);
    }
    for (QAction* pAction : qAsConst(m_pActions->m_listSelection)) {
        connect(pAction, &QAction::toggled, this, [this](bool bOn) {
            if (bOn) {
                selSizeChanged2();
            }
        });
        // A size that was too large for a former frame is checked without a rectangle; a click tries it
        // again.
        connect(pAction, &QAction::triggered, this, [this] {
            if (m_pActions->selectionIndex() != m_pFrameScene->selectionIndex()) {
                selSizeChanged2();
            }
        });
        m_pActions->setReady(pAction);
    }
    // Their tool bar is hidden on other pages, where their keys shall work too.
    addActions(m_pActions->m_listSelection);
}

void MainWindow::createMenus()
{
    QMenu* pFile = menuBar()->addMenu(QStringLiteral("&File"));
    pFile->addActions({m_pActions->m_pNewProject, m_pActions->m_pOpen, m_pActions->m_pFrames,
                       m_pActions->m_pClose, m_pActions->m_pSaveCurrent, m_pActions->m_pSaveSeries,
                       m_pActions->m_pMovieFrames, m_pActions->m_pScaledFrames,
                       m_pActions->m_pReciprocalVolume, m_pActions->m_pSmvImages,
                       m_pActions->m_pOtherPrograms, m_pActions->m_pReport});
    pFile->addSeparator();
    m_pRecentSeparator = pFile->addSeparator();
    pFile->addActions(m_pActions->m_listRecent);
    pFile->addSeparator();
    pFile->addAction(m_pActions->m_pExit);

    QMenu* pEdit = menuBar()->addMenu(QStringLiteral("&Edit"));
    pEdit->addActions({m_pActions->m_pUndo, m_pActions->m_pRedo});
    pEdit->addSeparator();
    pEdit->addAction(m_pActions->m_pCopyWindow);

    QMenu* pView = menuBar()->addMenu(QStringLiteral("&View"));
    pView->addActions({m_pActions->m_pZoomIn, m_pActions->m_pZoomOut});
    pView->addSeparator();
    pView->addActions(m_pActions->m_listPalette);
    m_pViewMenu = pView;

    QMenu* pWindow = menuBar()->addMenu(QStringLiteral("&Window"));
    for (QDockWidget* pDock : qAsConst(m_listDock)) {
        pWindow->addAction(pDock->toggleViewAction());
    }

    createToolsMenu();
    menuBar()->addSeparator();
    QMenu* pHelp = menuBar()->addMenu(QStringLiteral("&Help"));
    pHelp->addAction(m_pActions->m_pGuide);
    QAction* pWhatsThis = QWhatsThis::createAction(this);
    pWhatsThis->setStatusTip(QStringLiteral("Explain the control that is clicked next"));
    pHelp->addAction(pWhatsThis);
    pHelp->addSeparator();
    pHelp->addAction(m_pActions->m_pAbout);
    pHelp->addSeparator();
    pHelp->addAction(m_pActions->m_pAboutQt);
}

void MainWindow::createToolBar()
{
    QToolBar* pBar = addToolBar(QStringLiteral("ToolBar"));
    pBar->setObjectName(QStringLiteral("ToolBar"));
    explain(pBar->toggleViewAction(), tr("Shows or hides the tool bar."));
    pBar->addAction(m_pActions->m_pSolve);
    if (auto* pSolve = qobject_cast<QToolButton*>(pBar->widgetForAction(m_pActions->m_pSolve))) {
        pSolve->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);  // a newcomer finds it by its name
    }
    pBar->addSeparator();
    pBar->addActions({m_pActions->m_pOpen, m_pActions->m_pSaveCurrent, m_pActions->m_pSaveSeries});
    pBar->addSeparator();
    pBar->addActions({m_pActions->m_pZoomIn, m_pActions->m_pZoomOut});
    m_pScaleCombo = new QComboBox(pBar);
    m_pScaleCombo->setEditable(true);
    m_pScaleCombo->setInsertPolicy(QComboBox::NoInsert);
    m_pScaleCombo->setToolTip(QStringLiteral("Zoom"));
    for (double dfScale : m_vecScale) {
        m_pScaleCombo->addItem(QStringLiteral("%L1%").arg(100 * dfScale));
    }
    m_pScaleCombo->setCurrentIndex(m_nScaleIndex);
    connect(m_pScaleCombo, QOverload<int>::of(&QComboBox::activated), this, &MainWindow::updateScale);
    connect(m_pScaleCombo->lineEdit(), &QLineEdit::editingFinished, this, &MainWindow::scaleTextEntered);
    explain(m_pScaleCombo,
            tr("Zoom of the frame, per cent. A number that is typed goes to the nearest one listed."));
    pBar->addWidget(m_pScaleCombo);
    pBar->addSeparator();
    pBar->addActions(m_pActions->m_listPalette);
    pBar->addSeparator();

    m_pFrameSlider = new QSlider(Qt::Horizontal, pBar);
    m_pFrameSlider->setTickPosition(QSlider::TicksAbove);
    m_pFrameSlider->setTickInterval(1);
    m_pFrameSlider->setRange(1, 20);
    m_pFrameSlider->setMinimumWidth(120);
    m_pFrameSlider->setEnabled(false);
    explain(m_pFrameSlider, tr("Moves through the frames of the series."));
    pBar->addWidget(m_pFrameSlider);
    m_pFrameSpin = new QSpinBox(pBar);
    m_pFrameSpin->setRange(1, 20);
    m_pFrameSpin->setAlignment(Qt::AlignRight);
    m_pFrameSpin->setMinimumWidth(70);
    m_pFrameSpin->setEnabled(false);
    explain(m_pFrameSpin, tr("Number of the frame in view, from 1."));
    pBar->addWidget(m_pFrameSpin);
    pBar->addSeparator();
    for (QDockWidget* pDock : qAsConst(m_listDock)) {
        pBar->addAction(pDock->toggleViewAction());
    }
}

void MainWindow::createStatusBar()
{
    m_pProgressBar = new QProgressBar(this);
    m_pProgressBar->hide();
    statusBar()->addPermanentWidget(m_pProgressBar, 100);
    statusBarMessage(QStringLiteral("Ready"));
}

}  // namespace tessera
