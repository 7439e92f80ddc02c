// MainWindow: what the user has made, out of the window as one value and back into it.
#include "window/mainwindow.h"

#include "dataset/displayname.h"
#include "view3d/ed3dwidget.h"
#include "view3d/quietview.h"
#include "window/crystal/geometrycontrol.h"
#include "window/crystal/latticelook.h"
#include "window/frames/curveplot.h"
#include "window/frameview/framemarks.h"
#include "window/history/stepslist.h"
#include "window/history/undokeys.h"
#include "window/history/workhistory.h"
#include "window/integration/integrationcontroller.h"
#include "window/pages/cellpage.h"
#include "window/pages/framespage.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/shiftpage.h"
#include "window/runflag.h"
#include "window/windowactions.h"
#include "workstate/samework.h"

#include <QCheckBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QIcon>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTableWidget>

#include <algorithm>

namespace tessera {

namespace {

/// The first group of a view has all points that are in no other group, so its points are not kept.
QList<PointGroup> withoutPointsOfFirst(QList<PointGroup> listGroup)
{
    if (!listGroup.isEmpty()) {
        listGroup.first().listPoint.clear();
    }
    return listGroup;
}

QList<Peak3D> flatList(const QList<QList<Peak3D>>& listPeakFrame)
{
    QList<Peak3D> listFlat;
    for (const QList<Peak3D>& listPeak : listPeakFrame) {
        listFlat.append(listPeak);
    }
    return listFlat;
}

bool areSame(const QList<PointGroup>& listA, const QList<PointGroup>& listB)
{
    return std::equal(listA.begin(), listA.end(), listB.begin(), listB.end(),
                      [](const PointGroup& a, const PointGroup& b) {
                          return a.strLabel == b.strLabel && a.color == b.color && a.bVisible == b.bVisible &&
                                 a.listPoint == b.listPoint;
                      });
}

void setNumber(QDoubleSpinBox* pSpin, double dfValue)
{
    const QSignalBlocker blocker(pSpin);
    pSpin->setValue(dfValue);
}

}  // namespace

void MainWindow::createHistory()
{
    m_pHistory = new WorkHistory(this);
    QDockWidget* pDock = addDock(new StepsList(*m_pHistory, this), QStringLiteral("Steps"),
                                 Qt::LeftDockWidgetArea, QIcon(QStringLiteral(":/images/steps.png")), {});
    tabifyDockWidget(m_listDock.first(), pDock);
    m_listDock.first()->raise();
    connect(m_pActions->m_pUndo, &QAction::triggered, m_pHistory, &WorkHistory::undo);
    connect(m_pActions->m_pRedo, &QAction::triggered, m_pHistory, &WorkHistory::redo);
    m_pActions->setReady(m_pActions->m_pUndo);
    m_pActions->setReady(m_pActions->m_pRedo);
    connect(m_pHistory, &WorkHistory::changed, this, &MainWindow::showHistory);
    new UndoKeys(m_pHistory);
}

/// Begins the history with the window as it is now.
void MainWindow::startHistory()
{
    WorkHistoryHost host;
    host.fnState = [this] {
        syncParametersWithControls(true);  // reads the boxes alone: a number that is being typed stays so
        return workState();
    };
    host.fnShow = [this](const WorkState& state) { return showWorkState(state); };
    host.fnBusy = [this] { return isRunning(); };
    host.fnSay = [this](const QString& strText) { statusBarMessage(strText); };
    m_pHistory->start(host);
}

/// Brings the actions into line, which name the step that they would take back or make again.
void MainWindow::showHistory()
{
    const CWorkSteps& steps = m_pHistory->steps();
    const auto show = [&](QAction* pAction, const QString& strText, bool bCan, int nStep) {
        QString strName = bCan ? steps.name(nStep) : QString();
        strName.replace(QLatin1Char('&'), QLatin1String("&&"));  // else a menu takes it for a mnemonic
        pAction->setText(bCan ? QStringLiteral("%1 %2").arg(strText, strName) : strText);
        m_pActions->setInForce(pAction, bCan);
    };
    show(m_pActions->m_pUndo, tr("&Undo"), m_pHistory->canUndo(), steps.current());
    show(m_pActions->m_pRedo, tr("&Redo"), m_pHistory->canRedo(), steps.current() + 1);
}

WorkState MainWindow::workState() const
{
    WorkState state;
    state.series = m_dataSet;
    state.hunting = m_hunting;
    state.mapping = m_mapping;
    state.merging = m_merging;
    state.cellHunting = m_cellHunting;
    state.indexing = m_indexing;
    state.extraction = m_extraction;
    state.refinement = m_refinement;
    state.bConstantBackground = m_bConstantBackground;
    state.knownCell = m_knownCell;
    state.matTransformation = m_dfCellMatrix;
    // A list that the raw view shows for a look is no part of the work: the peaks behind it are.
    state.listRawGroup = withoutPointsOfFirst(
        m_rawGroups.holdsPeaks() ? m_colorsRaw.groups(*m_pView3DRaw)
                                 : m_rawGroups.kept(m_dataSet, flatList(m_dataSet.m_listPeakFrameShown)));
    if (!m_pView3DMerged->points().isEmpty()) {
        state.listMergedGroup = withoutPointsOfFirst(m_colorsMerged.groups(*m_pView3DMerged));
        state.listMergedPoint = m_pView3DMerged->points();
    }
    state.listTablePeak = m_listTablePeak;
    state.pGeometry = m_pGeometry->shown();
    state.pIntegration = m_pIntegration->sharedResult();
    return state;
}

bool MainWindow::showWorkState(const WorkState& state)
{
    if (isRunning()) {
        static_cast<void>(refuseDuringRun(tr("Going to another step")));
        return false;
    }
    stopImagePlay();
    WorkState former;
    bool bShown = false;
    guarded([&] {
        const CRunFlag showing(m_bShowingState);  // no slot of a control takes what others still show
        const CQuietPages quiet(*this);
        showSeriesOfState(state.series);
        former = workState();
        takeWorkState(state);
        showPagesOfState(former.series);
        withoutLatticeColors([&] { showPointsOfState(state, former); });
        showCellOfState();
        m_pIntegration->putBack(state.pIntegration);
        m_pGeometry->putBack(state.pGeometry);
        bShown = true;
    });
    guarded([&] { showFrameOfState(former.series); });
    return bShown;
}

void MainWindow::takeWorkState(const WorkState& state)
{
    m_dataSet.takeSeries(state.series);
    m_hunting = state.hunting;
    m_mapping = state.mapping;
    m_merging = state.merging;
    m_cellHunting = state.cellHunting;
    m_indexing = state.indexing;
    m_extraction = state.extraction;
    m_refinement = state.refinement;
    m_bConstantBackground = state.bConstantBackground;
    m_knownCell = state.knownCell;
    m_dfCellMatrix = state.matTransformation;
}

/// Where a series is one of other frames, the window becomes that of a series just opened, without results.
void MainWindow::showSeriesOfState(const SeriesData& series)
{
    if (series.m_listFrameFile == m_dataSet.m_listFrameFile &&
        series.m_strProjectDir == m_dataSet.m_strProjectDir &&
        series.m_strProjectName == m_dataSet.m_strProjectName) {
        return;
    }
    m_dataSet.takeSeries(series);
    showDataSetAnew();
    const bool bProject = QFileInfo::exists(projectFile());
    setWindowFilePath(displayName(bProject ? QStringList(projectFile()) : series.m_listFrameFile));
    showFirstFrame();
    m_dataSet.takeSeries({});  // so that the views take all of the series as changed
}

void MainWindow::showPagesOfState(const SeriesData& former)
{
    // The first pass may set a control that another one sets back on its way.
    syncParametersWithControls(false);
    syncParametersWithControls(false);
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int nColumn = 0; nColumn < 3; ++nColumn) {
            QLineEdit* pEdit = m_pCellPage->m_apEditMatrix[nRow][nColumn];
            const double dfElement = m_dfCellMatrix.at(nRow, nColumn);
            if (m_locale.toDouble(pEdit->text()) != dfElement) {
                pEdit->setText(m_locale.toString(dfElement, 'g', QLocale::FloatingPointShortest));
                pEdit->setCursorPosition(0);
            }
        }
    }
    if (m_dataSet.m_listStageTilt != former.m_listStageTilt ||
        m_dataSet.m_listBeamTilt != former.m_listBeamTilt ||
        m_dataSet.m_listOverallTilt != former.m_listOverallTilt) {
        const QString strFolder = m_strWorkingDir;
        const int nRow = m_pFramesPage->m_pFileTable->currentRow();
        fillFileTable();
        m_strWorkingDir = strFolder;
        const QSignalBlocker blocker(m_pFramesPage->m_pFileTable);
        m_pFramesPage->m_pFileTable->setCurrentCell(nRow, 0);
    }
    if (m_dataSet.m_listShift != former.m_listShift ||
        m_pShiftPage->m_pShiftTable->rowCount() != m_dataSet.m_listShift.size()) {
        fillShiftTable();
    }
}

void MainWindow::showPointsOfState(const WorkState& state, const WorkState& former)
{
    const DataSet& dataSet = m_dataSet;
    const bool bPeaks = !state.listRawGroup.isEmpty();
    const bool bSamePeaks = dataSet.m_listPeakFrameShown.isSharedWith(former.series.m_listPeakFrameShown);
    if (!bSamePeaks || !areSame(state.listRawGroup, former.listRawGroup)) {
        if (bPeaks) {
            showInRawView(flatList(dataSet.m_listPeakFrameShown), state.listRawGroup);
        } else if (m_rawGroups.holdsPeaks()) {
            showInRawView({});
        }
        m_rawGroups.forget();
        m_rawGroups.setHoldsPeaks(bPeaks);
    }
    const bool bSameReflections =
        dataSet.m_listPeakMergedShown.isSharedWith(former.series.m_listPeakMergedShown) &&
        dataSet.m_listReflectionIndexed.isSharedWith(former.series.m_listReflectionIndexed) &&
        state.listMergedPoint.isSharedWith(former.listMergedPoint);
    if (!bSameReflections || !areSame(state.listMergedGroup, former.listMergedGroup)) {
        const QuietView quiet(*m_pView3DMerged);
        if (state.listMergedPoint.isEmpty()) {
            const bool bShown = !state.listMergedGroup.isEmpty();
            m_pView3DMerged->setPoints(bShown ? dataSet.m_listPeakMergedShown : QList<Peak3D>(),
                                       state.listMergedGroup);
            m_pView3DMerged->setIndices(dataSet.m_listReflectionIndexed);
        } else {
            m_pView3DMerged->setPoints(state.listMergedPoint, state.listMergedGroup);
        }
    }
    if (!bSameReflections || !state.listTablePeak.isSharedWith(former.listTablePeak)) {
        // With the space group of the state: that of the page may have been changed since.
        showInPeakTable(state.listTablePeak);
    }
    if (!dataSet.m_listPeakChain.isSharedWith(former.series.m_listPeakChain)) {
        m_pCurvePlot->clearCurve();  // of a reflection that has left
    }
    if (!m_pLatticeLook->peaks.isOf(dataSet)) {
        forgetLattices();
    }
}

void MainWindow::showCellOfState()
{
    const std::optional<ReciprocalBasis> found = basisFromList(m_dataSet.m_listCellFound);
    if (!found) {
        m_pCellPage->m_pRadioCellAuto->setChecked(true);
    }
    {
        const QSignalBlocker blocker(m_pCellPage->m_pButtonTest);
        m_pCellPage->m_pButtonTest->setChecked(m_dataSet.m_listCell != m_dataSet.m_listCellFound && found);
    }
    if (found && m_pCellPage->m_pRadioCellManual->isChecked()) {
        setNumber(m_pCellPage->m_pSpinManualLengthA, double(length(found->a)));
        setNumber(m_pCellPage->m_pSpinManualLengthB, double(length(found->b)));
        setNumber(m_pCellPage->m_pSpinManualLengthC, double(length(found->c)));
    }
    for (ED3DWidget* pView : views3D()) {
        pView->setLattice(m_dataSet.m_listCell);
    }
    updateUnitCellInfo();
}

/// Shows the marks on the current frame, and reads the frame again if other pixels have to be repaired.
void MainWindow::showFrameOfState(const SeriesData& former)
{
    const MaskData& mask = m_dataSet.m_maskPeakHunting;
    if (mask.listPolygon != former.m_maskPeakHunting.listPolygon ||
        mask.fillRule != former.m_maskPeakHunting.fillRule ||
        m_pPeakSearchPage->m_pMaskTable->rowCount() != mask.listPolygon.size()) {
        fillMaskTable();
        m_pMarks->setMask(mask);
        m_pPeakSearchPage->m_pShowMaskCheck->setChecked(!mask.listPolygon.isEmpty());
        showPeakHuntingMask(!mask.listPolygon.isEmpty());
    }
    const int nFrame = m_pFrameSpin->value();
    if (m_dataSet.m_listHotPixel != former.m_listHotPixel && !m_dataSet.m_vecFrameImage.empty() &&
        nFrame >= 1 && nFrame <= m_dataSet.m_listFrameFile.size()) {
        switchToImgIndex(nFrame);
        return;
    }
    if (m_pPeakSearchPage->m_pShowPeaksCheck->isChecked() && !m_dataSet.m_vecFrameImage.empty()) {
        testCurrentPatternForPeaks();
    }
    showPeakText();
    showEstimatedPeakPosition();
    showRotationAxisLine();
    showFrameGuides();
}

}  // namespace tessera
