// MainWindow: the strip of stages that are done, stale or missing, and the run that brings them up to date.
#include "view3d/ed3dwidget.h"
#include "window/crystal/geometrycontrol.h"
#include "window/integration/integrationcontroller.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/shiftpage.h"
#include "window/road/roaddock.h"
#include "window/road/statusstrip.h"
#include "window/runflag.h"
#include "window/windowreport.h"
#include "workstate/stagestorun.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScopeGuard>
#include <QTableWidget>
#include <QToolBar>
#include <QToolBox>

#include <algorithm>

namespace tessera {

namespace {

const int g_nSettle =
    150;  // ms from a change to its show: less is not seen, and dragging a number makes many

/// The row of the road that shows a stage; two stages may share one.
RoadRowKind rowOf(WorkStage stage)
{
    switch (stage) {
        case WorkStage::Drift:
            return RoadRowKind::Drift;
        case WorkStage::Peaks:
            return RoadRowKind::Peaks;
        case WorkStage::Axis:
        case WorkStage::Mapping:
            return RoadRowKind::Axis;
        case WorkStage::Merging:
            return RoadRowKind::Merging;
        case WorkStage::Cell:
            return RoadRowKind::Cell;
        case WorkStage::Indexing:
            return RoadRowKind::Indexing;
        case WorkStage::Geometry:
            return RoadRowKind::Geometry;
        case WorkStage::Integration:
            break;
    }
    return RoadRowKind::Integration;
}

/// What a row of the road says of a result that no road has made; empty where there is none.
QString foundText(const StageStatus& status)
{
    switch (status.state) {
        case StageState::Missing:
            return {};
        case StageState::Done:
            return MainWindow::tr("there already: %1").arg(status.strReason);
        case StageState::Stale:
            break;
    }
    return MainWindow::tr("there already, but stale: %1").arg(status.strReason);
}

}  // namespace

void MainWindow::createStatusStrip()
{
    m_pStatus = new StatusStrip(this);
    addToolBarBreak();
    QToolBar* pBar = addToolBar(tr("Status"));
    pBar->setObjectName(QStringLiteral("Status"));
    pBar->setMovable(false);
    pBar->toggleViewAction()->setVisible(false);  // it comes and goes with the data set
    pBar->toggleViewAction()->setText({});
    pBar->addWidget(m_pStatus);
    pBar->hide();
    connect(m_pStatus->m_pUpdateButton, &QPushButton::clicked, this, &MainWindow::bringUpToDate);
    connect(m_pStatus, &StatusStrip::showWanted, this, [this](WorkStage stage) {
        if (!refuseDuringRun(tr("Showing a result"))) {
            showRoadRow(rowOf(stage));
        }
    });
    m_timerStatus.setSingleShot(true);
    m_timerStatus.setInterval(g_nSettle);
    connect(&m_timerStatus, &QTimer::timeout, this, &MainWindow::showWorkStatus);

    // One of these signals comes with each change of data or numbers.
    const auto later = [this] { m_timerStatus.start(); };
    for (QDoubleSpinBox* pSpin : m_pToolBox->findChildren<QDoubleSpinBox*>()) {
        connect(pSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, later);
    }
    for (QAbstractButton* pButton : m_pToolBox->findChildren<QAbstractButton*>()) {
        if (pButton->isCheckable()) {
            connect(pButton, &QAbstractButton::toggled, this, later);
        }
    }
    for (QGroupBox* pGroup : m_pToolBox->findChildren<QGroupBox*>()) {
        connect(pGroup, &QGroupBox::toggled, this, later);
    }
    for (QLineEdit* pEdit : m_pCellPage->m_apEditCell) {
        connect(pEdit, &QLineEdit::textChanged, this, later);
    }
    for (QTableWidget* pTable : {m_pShiftPage->m_pShiftTable, m_pPeakSearchPage->m_pMaskTable}) {
        connect(pTable->model(), &QAbstractItemModel::rowsInserted, this, later);
        connect(pTable->model(), &QAbstractItemModel::rowsRemoved, this, later);
    }
    for (ED3DWidget* pView : views3D()) {
        connect(pView, &ED3DWidget::pointDisplayDataChanged, this, later);
    }
    later();  // the settings may show the row of a window that was closed with a data set
}

std::vector<StageStatus> MainWindow::workStatusByPages()
{
    std::vector<StageStatus> listStatus;
    withPageNumbers([&] {
        listStatus = workStatus(m_dataSet, {m_hunting, m_mapping, m_merging, m_indexing});
    });
    return listStatus;
}

void MainWindow::showWorkStatus()
{
    if (isRunning()) {
        return;
    }
    m_timerStatus.stop();
    const bool bData = !m_dataSet.m_listFrameFile.isEmpty();
    m_pStatus->parentWidget()->setVisible(bData);
    if (bData) {
        guarded([this] {
            const std::vector<StageStatus> listStatus = workStatusByPages();
            m_pStatus->setStatus(listStatus, stagesText(stagesToRun(listStatus), listStatus));
            for (const StageStatus& status : listStatus) {
                if (status.stage != WorkStage::Mapping) {  // for which the dock has no row
                    m_roadRows.setFound(rowOf(status.stage), foundText(status));
                }
            }
            m_pRoad->setRows(m_roadRows.rows());
        });
    }
}

void MainWindow::runWorkStage(WorkStage stage)
{
    switch (stage) {
        case WorkStage::Drift:
            runShiftEvaluation();
            break;
        case WorkStage::Peaks:
            runPeakHunting();
            break;
        case WorkStage::Axis:
            findRotationAxis();
            break;
        case WorkStage::Mapping:
            recalculate3DPeakPositionsAndUpdateView();
            break;
        case WorkStage::Merging:
            peakReduction3D();
            break;
        case WorkStage::Cell:
            runUnitCellHunting();
            break;
        case WorkStage::Indexing:
            runIndexing();
            break;
        case WorkStage::Geometry:
            m_pGeometry->refine();
            break;
        case WorkStage::Integration:
            m_pIntegration->run();
            break;
    }
}

void MainWindow::bringUpToDate()
{
    if (m_bUpdating) {  // the wish to stop, also of the stage under way
        m_bUpdating = m_bRunning = m_bHuntingRunning = m_bSearchingCell = false;
        return;
    }
    if (refuseDuringRun(tr("Bringing the results up to date"))) {
        return;
    }
    CRunFlag flag(m_bUpdating);
    CRunScope scope(*this);
    WindowReport report(*this, &m_bUpdating);
    m_pStatus->setRunning(true);
    const auto ready = qScopeGuard([this] { m_pStatus->setRunning(false); });
    std::vector<WorkStage> listRun;
    while (flag.isSet()) {
        const std::vector<WorkStage> listStage = stagesToRun(workStatusByPages());
        if (listStage.empty()) {
            report.addMessage(tr("No result is stale."), Severity::Milestone);
            break;
        }
        const WorkStage stage = listStage.front();
        if (std::find(listRun.begin(), listRun.end(), stage) != listRun.end()) {
            report.addMessage(
                tr("%1 did not finish: results that depend on it are not changed.").arg(workStageName(stage)),
                Severity::Error);
            break;
        }
        listRun.push_back(stage);
        runWorkStage(stage);
        if (!report.goOn()) {
            break;
        }
    }
    if (!flag.isSet()) {
        report.addMessage(tr("Bringing the results up to date was stopped; finished results are kept."));
    }
}

}  // namespace tessera
