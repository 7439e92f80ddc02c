#include "window/crystal/geometrycontrol.h"

#include "crystal/cellarithmetic.h"
#include "reciprocal/indexing.h"
#include "reciprocal/latticepoints.h"
#include "reciprocal/mapping.h"
#include "records/progress.h"
#include "refinement/geometryofseries.h"
#include "road/calibrating.h"
#include "road/geometrytable.h"
#include "road/savedproject.h"
#include "road/seriesgeometry.h"
#include "view3d/ed3dwidget.h"
#include "window/alivedata.h"
#include "window/guards.h"
#include "window/history/workhistory.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/tabwidget.h"
#include "window/windowreport.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QPushButton>
#include <QThread>

#include <algorithm>

namespace tessera {

namespace {

/// The Bravais types of the cell in force.
std::vector<CellConstraint> constraintsOfCell(const DataSet& dataSet, CRunReport& report)
{
    FurtherLatticesOptions options;
    options.nMostLattices = 1;
    options.search.nJobs = QThread::idealThreadCount();
    return constraintsOf(
        analyseLattice(latticeBasisOf(*cellInForce(dataSet)), latticePoints(dataSet), options, [&report] {
            return report.goOn();
        }).listType);
}

/// The file with a suffix, if it has none.
QString withSuffix(const QString& strFile, const QString& strSuffix)
{
    return strFile.isEmpty() || !QFileInfo(strFile).suffix().isEmpty() ? strFile : strFile + strSuffix;
}

/// A refinement together with the residuals of the indexed peaks before and after it.
GeometryLook lookOf(const DataSet& dataSet, const GeometryRefinement& refinement)
{
    GeometryLook look;
    look.refinement = refinement;
    look.cellBefore = cellParametersFromList(dataSet.m_listCell).value_or(CellParameters());
    const std::vector<GeometrySpot> listSpot = spotsOfModel(geometrySpots(dataSet), refinement.before,
                                                            refinement.best());
    look.listAfter = spotResiduals(listSpot, refinement.best().geometry);
    look.listBefore = spotResiduals(listSpot, refinement.before);
    if (!dataSet.m_vecFrameImage.empty()) {
        const auto& pImage = dataSet.m_vecFrameImage.front();
        look.bounds = {QSizeF(pImage->Width(), pImage->Height()),
                       QPointF(dataSet.m_dfCenterX, dataSet.m_dfCenterY)};
    }
    return look;
}

/// Whether a refinement began with this geometry, as far as a user changes it.
bool beginsWith(const GeometryRefinement& refinement, const std::optional<DiffractionGeometry>& geometry)
{
    if (!geometry) {
        return false;
    }
    const auto numbers = [](const DiffractionGeometry& g) {
        std::vector<double> list = {g.plane.axis,       g.plane.stretchingCos, g.plane.stretchingSin,
                                    g.plane.ellipseCos, g.plane.ellipseSin,    g.plane.radial,
                                    g.plane.spiral,     g.plane.parabolicCos,  g.plane.parabolicSin,
                                    g.turn.outOfPlane,  g.dfWavelength,        g.dfPixelSize,
                                    g.dfRadius,         g.dfMiddleTilt};
        for (const DoubleVector& v : g.aBasis) {
            list.insert(list.end(), v.begin(), v.end());
        }
        return list;
    };
    return numbers(refinement.before) == numbers(*geometry);
}

QString calibrationFilter()
{
    return GeometryDialog::tr("Calibration (*.calib.json);;JSON (*.json);;All Files (*.*)");
}

}  // namespace

GeometryControl::GeometryControl(MainWindow& window)
    : QObject(&window), m_window(window), m_pDialog(new GeometryDialog(&window))
{
    m_pDialog->setWindowTitle(tr("Geometry Refinement"));
    connect(m_pDialog->m_pButtonRun, &QPushButton::clicked, this, &GeometryControl::refine);
    connect(m_pDialog->m_pButtonApply, &QPushButton::clicked, this, &GeometryControl::apply);
    connect(m_pDialog->m_pButtonUndo, &QPushButton::clicked, this, &GeometryControl::undo);
    connect(m_pDialog->m_pButtonSaveProject, &QPushButton::clicked, this, &GeometryControl::saveProject);
    connect(m_pDialog->m_pButtonSaveCalibration, &QPushButton::clicked, this,
            &GeometryControl::saveCalibration);
    connect(m_pDialog->m_pButtonLoadCalibration, &QPushButton::clicked, this,
            &GeometryControl::loadCalibration);
}

void GeometryControl::showDialog()
{
    m_pDialog->show();
    m_pDialog->raise();
    m_pDialog->activateWindow();
}

void GeometryControl::forget()
{
    m_listState.clear();
    m_pShown.reset();
    m_mappingFitted.reset();
    m_listCellFitted.clear();
    m_pDialog->setLook({});
    m_pDialog->setMessage({});
    updateButtons();
}

/// Says it in the log and in the dialog, which may cover the log.
void GeometryControl::tellFailure(const QString& strReason)
{
    WindowReport(m_window).addMessage(strReason, Severity::Error);
    m_pDialog->setMessage(strReason, true);
}

void GeometryControl::refine()
{
    m_window.runWithButton(m_window.m_bRunning, m_pDialog->m_pButtonRun, [this](CRunReport& report) {
        m_window.m_pCellPage->m_pButtonTest->setChecked(false);
        updateButtons();
        fit(report);
    });
    updateButtons();
}

void GeometryControl::fit(CRunReport& report)
{
    DataSet& dataSet = m_window.m_dataSet;
    const auto fail = [&](const QString& strReason) {
        report.addMessage(strReason, Severity::Error);
        m_pDialog->setMessage(strReason, true);
    };
    if (!cellInForce(dataSet)) {
        fail(tr("There is no unit cell: search or load one, merge and index first."));
        return;
    }
    if (dataSet.m_vecPeakIndexedOnFrame.isEmpty()) {
        fail(tr("No indexed peaks are available. Do merging and indexing first."));
        return;
    }
    if (!holdsIndicesOfCell(dataSet)) {
        fail(tr(
            "The unit cell is another one than the reflections were indexed with. Index them again first."));
        return;
    }
    m_pDialog->setMessage(tr("The geometry is being refined. \"Stop\" leaves all as it was."));
    const CProgress progress(report, tr("Refining the geometry"), 0, 0);
    GeometryRefinementOptions options;
    options.listFixed = m_pDialog->fixedNumbers();
    GeometryRefinement refinement;
    const MappingParameters mapping = m_window.m_mapping;
    m_window.computeAlive(report, [&](CAliveData& alive) {
        options.listConstraint = constraintsOfCell(alive.dataSet(), alive.report());
        refinement = refineSeriesGeometry(alive.dataSet(), mapping, options, QThread::idealThreadCount(),
                                          alive.report());
    });
    if (!report.goOn()) {
        fail(tr("The refinement of the geometry did not finish; all stays as it was."));
        return;
    }
    if (!refinement.done()) {
        fail(tr("The geometry stays as it is. %1").arg(refinement.strReason));
        return;
    }
    for (const QString& strLine : geometryTable(refinement)) {
        report.addMessage(strLine);
    }
    makeLook(refinement);
    dataSet.m_made.geometry = madeWithGeometry(dataSet);
}

void GeometryControl::take(const GeometryRefinement& refinement)
{
    if (refinement.done()) {
        makeLook(refinement);
        updateButtons();
    }
}

void GeometryControl::change(const std::function<void()>& fnChange)
{
    m_window.syncParametersWithControls(true);
    keepState();
    m_window.guarded(fnChange);
    updateButtons();
}

void GeometryControl::makeLook(const GeometryRefinement& refinement)
{
    const DataSet& dataSet = m_window.m_dataSet;
    m_pShown = std::make_shared<const GeometryRefinement>(refinement);
    keepLook({m_pShown, lookOf(dataSet, refinement), currentPeakMapping(dataSet, m_window.m_mapping),
              dataSet.m_listCell});
    showLook();
}

void GeometryControl::keepLook(const Look& look)
{
    m_listLook.erase(std::remove_if(m_listLook.begin(), m_listLook.end(),
                                    [](const Look& former) { return former.pRefinement.expired(); }),
                     m_listLook.end());
    m_listLook.push_back(look);
}

/// Shows the look of the refinement that is to be shown, which is among those kept.
void GeometryControl::showLook()
{
    const DataSet& dataSet = m_window.m_dataSet;
    for (const Look& kept : m_listLook) {
        if (kept.pRefinement.lock() == m_pShown) {
            m_mappingFitted = kept.mapping;
            m_listCellFitted = kept.listCell;
            m_pDialog->setLook(kept.look);
        }
    }
    const GeometryRefinement& refinement = *m_pShown;
    const QLocale& locale = m_window.m_locale;
    m_pDialog->m_pPlots->setFileStem(dataSet.m_strProjectName.isEmpty() ? QString()
                                                                        : fileOfProject(dataSet, QString()));
    m_pDialog->setMessage(
        tr("%L1 of %L2 indexed peaks fit with a residual (rms) of %3 px; before %L4 fitted with %5 px.")
            .arg(refinement.nFitAfter)
            .arg(refinement.nPeaks)
            .arg(locale.toString(refinement.dfRmsAfter, 'f', 2))
            .arg(refinement.nFitBefore)
            .arg(locale.toString(refinement.dfRmsBefore, 'f', 2)));
}

void GeometryControl::putBack(const std::shared_ptr<const GeometryRefinement>& pRefinement)
{
    while (!m_listState.empty() && m_listState.back().isInForce(m_window.m_dataSet, m_window.m_mapping)) {
        m_listState.pop_back();
    }
    const bool bKept = std::any_of(m_listLook.begin(), m_listLook.end(),
                                   [&](const Look& look) { return look.pRefinement.lock() == pRefinement; });
    if (!pRefinement) {
        m_pShown.reset();
        m_mappingFitted.reset();
        m_listCellFitted.clear();
        m_pDialog->setLook({});
        m_pDialog->setMessage({});
    } else if (pRefinement != m_pShown && bKept) {
        m_pShown = pRefinement;
        showLook();
    } else if (pRefinement != m_pShown) {  // of a former start of the program
        m_pShown = pRefinement;
        keepLook({m_pShown, lookOf(m_window.m_dataSet, *pRefinement), {}, {}});
        if (beginsWith(*pRefinement, geometryOfSeries(m_window.m_dataSet, m_window.m_mapping))) {
            m_listLook.back().mapping = currentPeakMapping(m_window.m_dataSet, m_window.m_mapping);
            m_listLook.back().listCell = m_window.m_dataSet.m_listCell;
        }
        showLook();
    }
    updateButtons();
}

/// Whether the refinement that is shown began with the geometry and the cell in force.
bool GeometryControl::isFresh() const
{
    return m_mappingFitted &&
           *m_mappingFitted == currentPeakMapping(m_window.m_dataSet, m_window.m_mapping) &&
           m_listCellFitted == m_window.m_dataSet.m_listCell;
}

void GeometryControl::updateButtons()
{
    const bool bIdle = !m_window.isPumping();
    m_pDialog->setReady(bIdle && m_pDialog->model() && isFresh(), bIdle && !m_listState.empty());
}

void GeometryControl::keepState()
{
    m_window.m_pCellPage->m_pButtonTest->setChecked(false);
    m_listState.emplace_back(m_window.m_dataSet, m_window.m_mapping);
}

/// Shows the geometry of the data set on the pages, without computing anything.
void GeometryControl::showGeometry()
{
    const MainWindow::CQuietPages quiet(m_window);
    m_window.syncParametersWithControls(false);
    const QString strFolder = m_window.m_strWorkingDir;
    m_window.fillFileTable();
    m_window.m_strWorkingDir = strFolder;
    m_window.fillShiftTable();
}

/// What is mapped, merged and indexed follows the geometry in force, as if the user had gone through the
/// pages.
void GeometryControl::follow()
{
    DataSet& dataSet = m_window.m_dataSet;
    const bool bMerged = !dataSet.m_listPeakChain.isEmpty();
    const bool bIndexed = bMerged && !dataSet.m_listReflectionIndexed.isEmpty();
    const int nTab = m_window.m_pTabWidget->currentIndex();
    m_window.updateUnitCell();
    if (canMapPeaks(dataSet)) {
        m_window.recalculate3DPeakPositionsAndUpdateView();
    }
    if (bMerged) {
        m_window.peakReduction3D();
    }
    if (bIndexed) {
        MainWindow::CRunScope scope(m_window);
        WindowReport report(m_window);
        const CWaitCursor wait;
        IndexingParameters indexing = m_window.m_indexing;
        indexing.m_bOutputIndexing = false;  // files are the page's affair
        indexing.m_bOutputStatistics = false;
        indexing.m_bOutputRefinedCell = false;
        m_window.guarded([&] {
            const QList<Peak3D> listMerged = dataSet.m_listPeakMerged;
            m_window.computeAlive(report, [&](CAliveData& alive) {
                runIndexing(alive.dataSet(), listMerged, indexing, alive.report(),
                            [&](const IndexingResult& result) {
                                alive.show([&] { m_window.showIndexing(result); });
                            });
            });
        });
    }
    m_window.m_pTabWidget->setCurrentIndex(nTab);
    m_window.showRotationAxisLine();
}

void GeometryControl::apply()
{
    const GeometryModel* pModel = m_pDialog->model();
    if (!pModel || m_window.refuseDuringRun(tr("Taking a refined geometry"))) {
        return;
    }
    m_window.syncParametersWithControls(true);
    if (!isFresh()) {
        tellFailure(tr("Geometry, beam or cell have changed since the refinement. Refine again."));
        updateButtons();
        return;
    }
    const double dfFormerAxis = m_window.m_dataSet.m_dfRotationAxis;
    const int nFormer = m_window.m_dataSet.m_listReflectionIndexed.size();
    const WorkHistory::CHold step(*m_window.m_pHistory, tr("Refined geometry taken"));
    keepState();
    m_window.guarded([&] {
        takeGeometry(m_window.m_dataSet, m_window.m_mapping, *pModel);
        showGeometry();
        follow();
        m_window.m_dataSet.m_made.geometry = madeWithGeometry(m_window.m_dataSet);
    });
    const QString strText =
        tr("The refined geometry is in force: rotation axis %1° (it was %2°). The peaks are mapped, merged "
           "and "
           "indexed anew with it: %L3 reflections have indices, before %L4. No file was changed.")
            .arg(m_window.m_locale.toString(m_window.m_dataSet.m_dfRotationAxis, 'f', 3),
                 m_window.m_locale.toString(dfFormerAxis, 'f', 3))
            .arg(m_window.m_dataSet.m_listReflectionIndexed.size())
            .arg(nFormer);
    WindowReport(m_window).addMessage(strText, Severity::Milestone);
    m_pDialog->setMessage(strText + tr(" \"Save Project...\" keeps it; \"Undo\" goes back."));
    updateButtons();
}

void GeometryControl::undo()
{
    if (m_listState.empty() || m_window.refuseDuringRun(tr("Going back to the former geometry"))) {
        return;
    }
    const WorkHistory::CHold step(*m_window.m_pHistory, tr("Former geometry put back"));
    m_window.m_pCellPage->m_pButtonTest->setChecked(false);
    const CGeometryState state = std::move(m_listState.back());
    m_listState.pop_back();
    bool bAll = false;
    m_window.guarded([&] {
        bAll = state.putBack(m_window.m_dataSet, m_window.m_mapping);
        showGeometry();
        follow();  // brings the views into line
        if (bAll) {
            static_cast<void>(state.putBack(m_window.m_dataSet, m_window.m_mapping));
        }
    });
    const QString strText =
        bAll ? tr("The former geometry is back, with all that was mapped, merged and indexed.")
             : tr("The former geometry is back. The peaks are others than then: they were "
                  "mapped, merged and indexed anew.");
    WindowReport(m_window).addMessage(strText, Severity::Milestone);
    m_pDialog->setMessage(strText);
    updateButtons();
}

void GeometryControl::saveProject()
{
    const DataSet& dataSet = m_window.m_dataSet;
    if (m_window.refuseDuringRun(tr("Saving a project"))) {
        return;
    }
    if (dataSet.m_listFrameFile.isEmpty()) {
        tellFailure(tr("No data set is open."));
        return;
    }
    m_window.syncParametersWithControls(true);
    const QString strFile = withSuffix(
        QFileDialog::getSaveFileName(m_pDialog, tr("Save Project"),
                                     fileOfProject(dataSet, ResultFile::RefinedProject),
                                     tr("Projects (*.ed3d)")),
        QStringLiteral(".ed3d"));
    if (strFile.isEmpty()) {
        return;
    }
    QString strReason;
    QStringList listFile;
    if (!saveSeriesAsProject(dataSet, m_window.m_mapping, strFile, &strReason, &listFile)) {
        tellFailure(tr("The project was not saved. %1").arg(strReason));
        return;
    }
    const QString strText =
        tr("The series is saved with the geometry in force: %1").arg(listFile.join(QStringLiteral(", ")));
    WindowReport(m_window).addMessage(strText);
    m_pDialog->setMessage(strText);
}

void GeometryControl::saveCalibration()
{
    const DataSet& dataSet = m_window.m_dataSet;
    if (m_window.refuseDuringRun(tr("Saving a calibration"))) {
        return;
    }
    m_window.syncParametersWithControls(true);
    const GeometryModel* pModel = m_pDialog->model();
    const QString strFile = withSuffix(
        QFileDialog::getSaveFileName(m_pDialog, tr("Save Calibration"),
                                     fileOfProject(dataSet, QStringLiteral(".calib.json")),
                                     calibrationFilter()),
        QStringLiteral(".calib.json"));
    if (strFile.isEmpty()) {
        return;
    }
    const Calibration calibration = pModel ? calibrationOfModel(dataSet, *pModel, m_window.m_knownCell)
                                           : calibrationOf(dataSet, m_window.m_mapping);
    QString strReason;
    if (!writeCalibration(strFile, calibration, &strReason)) {
        tellFailure(strReason);
        return;
    }
    QString strText =
        pModel
            ? tr("The refined axis and distortion are saved to %1.").arg(strFile)
            : tr("Axis and distortion in force, which nothing refined here, are saved to %1.").arg(strFile);
    strText += calibration.dfPixelSize
                   ? tr(" It contains the pixel size, determined by the known cell.")
                   : tr(" It contains no pixel size, which could be determined only with a known cell.");
    WindowReport(m_window).addMessage(strText);
    m_pDialog->setMessage(strText);
}

void GeometryControl::loadCalibration()
{
    if (m_window.refuseDuringRun(tr("Taking a calibration"))) {
        return;
    }
    if (m_window.m_dataSet.m_listFrameFile.isEmpty()) {
        tellFailure(tr("No data set is open that could take a calibration."));
        return;
    }
    const QString strFile = QFileDialog::getOpenFileName(m_pDialog, tr("Load Calibration"),
                                                         m_window.m_strWorkingDir, calibrationFilter());
    if (strFile.isEmpty()) {
        return;
    }
    m_window.syncParametersWithControls(true);
    QString strReason;
    const std::optional<Calibration> calibration = readCalibration(strFile, &strReason);
    if (!calibration) {
        tellFailure(strReason);
        return;
    }
    const WorkHistory::CHold step(*m_window.m_pHistory, tr("Calibration taken"));
    keepState();
    QStringList listWarning;
    m_window.guarded([&] {
        listWarning = takeCalibration(m_window.m_dataSet, m_window.m_mapping, *calibration);
        showGeometry();
        follow();
    });
    WindowReport report(m_window);
    for (const QString& strWarning : listWarning) {
        report.addMessage(strWarning, Severity::Warning);
    }
    QString strText = tr("The calibration by %1 (%2) is in force: rotation axis %3°. \"Undo\" goes back.")
                          .arg(calibration->strSeries, calibration->strDate,
                               m_window.m_locale.toString(m_window.m_dataSet.m_dfRotationAxis, 'f', 3));
    report.addMessage(strText, Severity::Milestone);
    listWarning.prepend(strText);
    m_pDialog->setMessage(listWarning.join(QLatin1Char('\n')), listWarning.size() > 1);
    updateButtons();
}

}  // namespace tessera
