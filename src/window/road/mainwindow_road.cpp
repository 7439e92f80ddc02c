// MainWindow: "Solve", the road of the driver with its dock, and what of its results each view takes over.
#include "window/mainwindow.h"

#include "dataset/maskfile.h"
#include "dataset/opening.h"
#include "dataset/serieschoicefile.h"
#include "dataset/seriesreading.h"
#include "frameview/baseimgview.h"
#include "records/wholefile.h"
#include "road/closinglines.h"
#include "view3d/ed3dwidget.h"
#include "window/crystal/geometrycontrol.h"
#include "window/frameview/framemarks.h"
#include "window/history/workhistory.h"
#include "window/integration/integrationcontroller.h"
#include "window/integration/qualitytab.h"
#include "window/messageedit.h"
#include "window/newprojectdialog.h"
#include "window/pages/cellpage.h"
#include "window/pages/framespage.h"
#include "window/pages/integrationpage.h"
#include "window/pages/mergingpage.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/shiftpage.h"
#include "window/pages/view3dpage.h"
#include "window/reciprocal/peaktableview.h"
#include "window/road/roaddock.h"
#include "window/road/roadwork.h"
#include "window/road/statusstrip.h"
#include "window/tabwidget.h"
#include "window/windowactions.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QDockWidget>
#include <QFileInfo>
#include <QPushButton>
#include <QScopeGuard>
#include <QSettings>
#include <QToolBox>

namespace tessera {

namespace {

/// Shows the progress in the dock as well.
class CDockReport : public CRunReport {
public:
    CDockReport(CRunReport& report, RoadDock& dock) : m_report(report), m_dock(dock) {}

    void addMessage(const QString& strText, Severity severity) override
    {
        m_report.addMessage(strText, severity);
    }
    void addHtml(const QString& strHtml, Severity severity) override { m_report.addHtml(strHtml, severity); }
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar) override
    {
        m_report.startProgress(strFormat, nMinimum, nMaximum, bTaskBar);
        m_dock.startProgress(strFormat, nMinimum, nMaximum);
    }
    void setProgress(int nValue) override
    {
        m_report.setProgress(nValue);
        m_dock.setProgress(nValue);
    }
    void endProgress() override
    {
        m_report.endProgress();
        m_dock.endProgress();
    }
    bool goOn() override { return m_report.goOn(); }

private:
    CRunReport& m_report;
    RoadDock& m_dock;
};

bool isStage(const RoadStep& step, RoadStage stage)
{
    return step.strPart == roadStageName(stage);
}

}  // namespace

void MainWindow::createRoad()
{
    m_pRoad = new RoadDock(this);
    QDockWidget* pDock = addDock(m_pRoad, QStringLiteral("Road"), Qt::LeftDockWidgetArea,
                                 QIcon(QStringLiteral(":/images/road.png")), QString());
    tabifyDockWidget(m_listDock.first(), pDock);
    m_listDock.first()->raise();
    connect(m_pRoad->m_pSolveButton, &QPushButton::clicked, this, &MainWindow::solve);
    connect(m_pRoad, &RoadDock::roadWanted, this, &MainWindow::solveFrom);
    connect(m_pRoad, &RoadDock::showWanted, this, &MainWindow::showRoadRow);
    connect(m_pRoad, &RoadDock::settingsWanted, this, &MainWindow::showRoadSettings);
}

void MainWindow::solve()
{
    if (m_bSolving) {
        m_bSolving = false;  // the wish to stop
        return;
    }
    if (refuseDuringRun(tr("Solving"))) {
        return;
    }
    if (!QFileInfo::exists(projectFile()) && !askForProject()) {
        return;
    }
    solveFrom(RoadStage::Shifts);
}

/// The project that is open; empty where none is, or frames without a project.
QString MainWindow::projectFile() const
{
    return m_dataSet.m_strProjectDir.isEmpty() ? QString()
                                               : fileOfProject(m_dataSet, QStringLiteral(".ed3d"));
}

/// Asks for a project: frames alone have no tilts and no geometry.
bool MainWindow::askForProject()
{
    NewProjectDialog dialog(m_strWorkingDir, this);
    const std::unique_ptr<QSettings> pSettings(makeSettings());
    dialog.readSettings(*pSettings);
    dialog.addFrames(m_dataSet.m_listFrameFile);
    dialog.m_pSolveCheck->hide();  // it was asked for already
    if (dialog.exec() != QDialog::Accepted) {
        return false;
    }
    dialog.writeSettings(*pSettings);
    openFiles({dialog.projectFile()});
    return QFileInfo::exists(projectFile());
}

RoadOptions MainWindow::roadOptions(RoadStage stageFrom)
{
    RoadOptions options;
    options.listInput = QStringList(projectFile());
    options.stageFrom = stageFrom;
    DataSet dataSetOfFile;
    MappingParameters mappingOfFile;
    CRunReport silent;
    QStringList listReason;
    if (tessera::openProject(dataSetOfFile, mappingOfFile, projectFile(), silent, &listReason,
                             AxisLine::MayLack)) {
        giveChangedGeometry(pageGeometryOf(dataSetOfFile, mappingOfFile),
                            pageGeometryOf(m_dataSet, m_mapping), options);
        giveMask(dataSetOfFile.m_listHotPixel, options);
    }
    giveReading(options);
    if (m_numbersLeft && stageFrom > RoadStage::Shifts) {
        giveChangedNumbers(*m_numbersLeft, pageNumbers(), options);
    }
    return options;
}

/// The choice of frames, sums and bins, which the run must not take from elsewhere; quantities in pixels are
/// converted from the pages to those of the files, like options of the driver.
void MainWindow::giveReading(RoadOptions& options)
{
    const SeriesChoice& choice = m_dataSet.m_reading.choice;
    if (!choice.isPlain() || QFileInfo::exists(seriesChoiceFile(fileOfProject(m_dataSet, QString())))) {
        options.choice = choice;
    }
    if (options.dfPixelSize) {
        *options.dfPixelSize /= choice.nBin;
    }
    for (auto& [pMember, dfValue] : options.listDistortion) {
        dfValue *= pMember == &SeriesDistortion::dfRadius ? choice.nBin : 1;
    }
}

/// What the user leaves out of the peak search and of the integration. The road reads areas from a file, as
/// the command that makes the same results again has to: that of the mask, or one that is written beside the
/// project.
void MainWindow::giveMask(const QList<QPoint>& listHotPixelOfFile, RoadOptions& options)
{
    const quint64 nHotPixels = printOfPixels(m_dataSet.m_listHotPixel);
    if (nHotPixels != printOfPixels(listHotPixelOfFile) &&
        nHotPixels != printOfPixels(m_leftOut.listHotPixel)) {
        options.hotPixels = m_dataSet.m_listHotPixel;
    }
    const MaskData& mask = m_dataSet.m_maskPeakHunting;
    if (mask.listPolygon == m_leftOut.listArea) {
        return;  // the road finds these itself, or read them from where it reads them again
    }
    if (mask.listPolygon.isEmpty()) {
        options.bFindDefects = false;  // the user has removed the areas that it found
        return;
    }
    const int nBin = m_dataSet.m_reading.choice.nBin;
    MaskData maskOfFile;
    if (!m_strMaskFile.isEmpty() && readMaskFile(maskOfFile, m_strMaskFile) != 0 &&
        maskInBins(maskOfFile, nBin).listPolygon == mask.listPolygon) {
        options.strMaskFile = m_strMaskFile;
        return;
    }
    const QString strFile = fileOfProject(m_dataSet, QStringLiteral("_window.msk"));
    QString strReason;
    WindowReport report(*this);
    if (writeWholeFile(strFile, maskFileText(maskInFile(mask, nBin)), &strReason)) {
        m_strMaskFile = strFile;
        options.strMaskFile = strFile;
        report.addMessage(tr("The mask is written to %1, from where it is read.").arg(strFile));
    } else {
        report.addMessage(tr("Warning: the mask is left out of this run. %1").arg(strReason),
                          Severity::Warning);
    }
}

PageNumbers MainWindow::pageNumbers() const
{
    return {pageGeometryOf(m_dataSet, m_mapping), m_hunting, m_mapping, m_merging, m_cellHunting, m_indexing};
}

void MainWindow::solveFrom(RoadStage stageFrom)
{
    if (m_bSolving || !QFileInfo::exists(projectFile())) {
        return;
    }
    m_pRoad->parentWidget()->show();
    m_pRoad->parentWidget()->raise();
    runWithButton(m_bSolving, m_pRoad->m_pSolveButton, [&](CRunReport& report) {
        clearFrameMarks();
        m_pHistory->nameNextStep(stageFrom == RoadStage::Shifts
                                     ? tr("Solve")
                                     : tr("Solve from \"%1\"").arg(roadStageName(stageFrom)));
        CDockReport dockReport(report, *m_pRoad);
        m_roadRows.begin(stageFrom);
        m_pRoad->setRows(m_roadRows.rows());
        m_pRoad->setRunning(true);
        m_pStatus->m_pUpdateButton->setEnabled(false);
        const auto ready = qScopeGuard([this] {
            m_pRoad->setRunning(false);
            m_pStatus->m_pUpdateButton->setEnabled(true);
        });
        m_pRoad->setClosingText({});
        m_pRoadWork.reset();
        const auto pWork = std::make_shared<CRoadWork>(roadOptions(stageFrom));
        guarded([&] {
            pWork->walk(dockReport, [this](const RoadStep& step, const RoadState& state) {
                m_roadRows.take(step, state.results);
                m_pRoad->setRows(m_roadRows.rows());
                if (step.bEnded) {
                    takeRoadStep(step, state);
                }
            });
        });
        if (pWork->state().results.lastStage) {
            m_pRoadWork = pWork;
        }
        m_roadRows.end();
        // A mask of the user goes into the next road as well.
        m_strMaskFile = pWork->state().options.strMaskFile;
        m_leftOut = {m_strMaskFile.isEmpty() ? m_dataSet.m_maskPeakHunting.listPolygon : QList<QPolygonF>(),
                     m_dataSet.m_listHotPixel};
        m_numbersLeft = pageNumbers();
        m_pRoad->setRows(m_roadRows.rows());
        m_pRoad->setClosingText(closingLines(pWork->state().results).join(QLatin1Char('\n')));
    });
}

/// Takes over what the road knows by now. Its own thread waits meanwhile.
void MainWindow::takeRoadStep(const RoadStep& step, const RoadState& state)
{
    if (step.strPart == QLatin1String("open")) {
        if (!step.end.finished()) {
            return;
        }
        const CQuietPages quiet(*this);
        m_dataSet.takeSeries(state.dataSet);
        m_mapping = state.mapping;
        showDataSetAnew();
        pumpEvents();
        showFirstFrame();
        return;
    }
    {
        const CQuietPages quiet(*this);
        m_dataSet.takeSeries(state.dataSet);
        m_mapping = state.mapping;
        m_hunting = state.options.hunting;
        m_merging = state.options.merging;
        m_cellHunting = state.options.cell;
        m_indexing.m_dfIndexThreshold = state.options.indexing.m_dfIndexThreshold;
        m_indexing.m_nSpaceGroup = state.options.indexing.m_nSpaceGroup;
        syncParametersWithControls(false);
    }
    showRoadResult(step, state);
    keepStage(tr("Solve: %1").arg(step.strPart));
}

void MainWindow::showRoadResult(const RoadStep& step, const RoadState& state)
{
    if (isStage(step, RoadStage::Shifts)) {
        fillShiftTable();
    } else if (isStage(step, RoadStage::Peaks)) {
        fillMaskTable();
        m_pMarks->setMask(m_dataSet.m_maskPeakHunting);
        m_rawGroups.forget();
        forgetLattices();
    } else if (isStage(step, RoadStage::Merge)) {
        showPeaksIn3D();
        m_pView3DRaw->viewAlong({1, 0, 0});  // along the rotation axis
        m_nMergedGroup = -1;
        pumpEvents();
        showInMergedView(m_dataSet.m_listPeakMergedShown, {});
        pumpEvents();
        updatePeakTable(m_dataSet.m_listPeakMerged);
    } else if (isStage(step, RoadStage::Cell)) {
        showOpenedCell();
    } else if (isStage(step, RoadStage::Index)) {
        showOpenedCell();
        pumpEvents();  // an answer to a click does not wait for all views
        m_pView3DMerged->setIndices(m_dataSet.m_listReflectionIndexed);
        pumpEvents();
        updatePeakTable(m_dataSet.m_listReflectionIndexed);
        pumpEvents();
        update3DViewControls();
    } else if (isStage(step, RoadStage::Geometry)) {
        if (m_dataSet.m_peakMapping) {
            showPeaksIn3D();
            pumpEvents();
        }
        if (state.results.geometry) {
            m_pGeometry->take(*state.results.geometry);
        }
    } else if (isStage(step, RoadStage::Integrate) && state.results.integrate &&
               state.results.integrate->result) {
        m_pIntegration->take(std::make_shared<const IntegrationResult>(*state.results.integrate->result));
    }
}

void MainWindow::showRoadRow(RoadRowKind kind)
{
    const int nFrameTab = 0, nRawTab = 1, nMergedTab = 2;
    switch (kind) {
        case RoadRowKind::Drift:
            showRoadSettings(kind);  // the table of shifts
            m_pTabWidget->setCurrentIndex(nFrameTab);
            break;
        case RoadRowKind::Peaks:
            m_pTabWidget->setCurrentIndex(nFrameTab);
            m_pPeakSearchPage->m_pShowPeaksCheck->setChecked(true);
            break;
        case RoadRowKind::Axis:
            m_pTabWidget->setCurrentIndex(nRawTab);
            m_pView3DRaw->viewAlong({1, 0, 0});
            break;
        case RoadRowKind::Merging:
            m_pTabWidget->setCurrentIndex(nMergedTab);
            break;
        case RoadRowKind::Cell:
        case RoadRowKind::Indexing:
            m_pTabWidget->setCurrentIndex(nMergedTab);
            m_pView3DPage->m_pCheckLatticeLines->setChecked(true);
            rotateAlongRA();
            break;
        case RoadRowKind::Lattice:
            showLattices();
            break;
        case RoadRowKind::Geometry:
            m_pGeometry->showDialog();
            break;
        case RoadRowKind::Integration:
            m_pTabWidget->setCurrentWidget(findChild<QualityTab*>());
            break;
    }
}

void MainWindow::showRoadSettings(RoadRowKind kind)
{
    if (kind == RoadRowKind::Geometry) {
        m_pGeometry->showDialog();
        return;
    }
    QWidget* pPage = nullptr;
    switch (kind) {
        case RoadRowKind::Drift:
            pPage = m_pShiftPage;
            break;
        case RoadRowKind::Peaks:
            pPage = m_pPeakSearchPage;
            break;
        case RoadRowKind::Axis:
            pPage = m_pFramesPage;
            break;
        case RoadRowKind::Merging:
            pPage = m_pMergingPage;
            break;
        case RoadRowKind::Integration:
            pPage = findChild<IntegrationPage*>();
            break;
        default:
            pPage = m_pCellPage;
            break;
    }
    m_listDock.first()->show();
    m_listDock.first()->raise();
    m_pToolBox->setCurrentWidget(pPage);
}

}  // namespace tessera
