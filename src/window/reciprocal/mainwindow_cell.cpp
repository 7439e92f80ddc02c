// MainWindow: the unit cell in force, how it is found, set by hand, and read from and written to files.
#include "window/mainwindow.h"

#include "crystal/cellarithmetic.h"
#include "dataset/unitcellfile.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/latticehunting.h"
#include "reciprocal/mapping.h"
#include "reciprocal/reflectionselection.h"
#include "road/cellresult.h"
#include "road/cellsearch.h"
#include "road/formercell.h"
#include "view3d/ed3dwidget.h"
#include "window/alivedata.h"
#include "window/messageedit.h"
#include "window/pages/cellpage.h"
#include "window/pages/view3dpage.h"
#include "window/reciprocal/manualcell.h"
#include "window/runflag.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QThread>

#include <array>

namespace tessera {

namespace {

QString cellFilter()
{
    return MainWindow::tr("Unit Cell Files (*.%1);;All Files (*.*)").arg(QStringLiteral("uc"));
}

/// The boxes of the lengths of a*, b*, c*, Å⁻¹.
std::array<QDoubleSpinBox*, 3> lengthSpins(const CellPage& page)
{
    return {page.m_pSpinManualLengthA, page.m_pSpinManualLengthB, page.m_pSpinManualLengthC};
}

}  // namespace

bool MainWindow::selectReflectionsForProcessing(QList<Peak3D>& listPeak)
{
    const int nGroup = selectedGroupRow(m_pCellPage->m_pTableReflectionSelection);
    if (nGroup < 0) {
        return false;
    }
    const QList<QList<int>>& listGroup = m_pView3DMerged->groupPoints();
    if (nGroup >= listGroup.size()) {
        QMessageBox::warning(this, QStringLiteral("Error"), QStringLiteral("Wrong group in selection!"));
        return false;
    }
    WindowReport report(*this);
    return tessera::selectReflectionsForProcessing(m_dataSet.m_listPeakMerged, m_pView3DMerged->points(),
                                                   listGroup[nGroup], listPeak, report);
}

void MainWindow::runUnitCellHunting()
{
    if (m_bSearchingCell) {  // a click on "Stop"
        m_bSearchingCell = false;
        return;
    }
    if (refuseDuringRun(tr("Searching for a unit cell"))) {
        return;
    }
    syncParametersWithControls(true);
    QList<Peak3D> listSelection;
    if (m_cellHunting.m_method != CellSearchMethod::Directions &&
        !selectReflectionsForProcessing(listSelection)) {
        return;
    }
    CRunScope scope(*this);
    searchCellWithButton(listSelection);
}

/// Runs a search for the cell. One that works on the peaks of the frames takes long, and its button becomes
/// "Stop" meanwhile. One by difference vectors of the selected reflections is over soon, and its button is
/// disabled.
void MainWindow::searchCellWithButton(const QList<Peak3D>& listSelection)
{
    QPushButton* pButton = m_pCellPage->m_pButtonSearchCell;
    const QString strButton = pButton->text();
    // An automatic range of the edges is taken from the peaks of the frames, too.
    const bool bOnPeaks = m_cellHunting.m_method != CellSearchMethod::DifferenceVectors ||
                          m_cellHunting.m_bAutoRange;
    CRunFlag flag(m_bSearchingCell);
    WindowReport report(*this, &m_bSearchingCell);
    if (bOnPeaks) {
        mapPeaksAnew(tr("They are mapped anew before the search."), report);
        showCellRange();
        pButton->setText(tr("Stop"));
    }
    // A search by difference vectors of no reflections is refused at once, and the page stays as it is.
    if (bOnPeaks || !listSelection.isEmpty()) {
        pButton->setEnabled(bOnPeaks);
        report.goOn();  // the window handles its events, so that the button is drawn
        m_pCellPage->m_pButtonTest->setChecked(false);  // puts the committed cell in force
    }
    CellSearch search{m_cellHunting, m_indexing.m_dfIndexThreshold, PoorCell::Told, m_strLatticeHost,
                      QThread::idealThreadCount()};
    const QList<Vec3D> listFormer = m_dataSet.m_listCellFound;
    bool bFound = false;
    guarded([&] {
        CellSearchResult result;
        computeAlive(report, [&](CAliveData& alive) {
            search.fnBeforeSave = [&alive] { keepFormerCell(alive.dataSet(), alive.report()); };
            result = searchCell(alive.dataSet(), listSelection, search, alive.report());
        });
        bFound = result.end.finished();
        if (result.end.end == RunEnd::Stopped && bOnPeaks) {
            report.addMessage(tr("The search for the cell was stopped."));
        }
        if (result.bSaved) {
            startDialogsAtCellFile();
        }
        if (bFound) {
            if (const QString strPoorer = tellPoorerCell(m_dataSet, listFormer); !strPoorer.isEmpty()) {
                m_pMessageEdit->addMessage(strPoorer, g_colorDoubt);
            }
        }
    });
    if (bFound) {
        updateUnitCell();
        showLattice();
    }
    pButton->setText(strButton);
    pButton->setEnabled(true);
}

void MainWindow::showCellRange()
{
    if (isPumping() || m_bShowingState || !m_pCellPage->m_pCheckAutoRange->isChecked()) {
        return;
    }
    syncParametersWithControls(true);
    guarded([this] { m_cellHunting = withRange(m_cellHunting, m_dataSet); });
    m_pCellPage->m_pSpinCellRangeMin->setValue(m_cellHunting.m_dfCellRangeMin);
    m_pCellPage->m_pSpinCellRangeMax->setValue(m_cellHunting.m_dfCellRangeMax);
}

void MainWindow::saveProjectCell(CRunReport& report)
{
    if (tessera::saveProjectCell(m_dataSet, report)) {
        startDialogsAtCellFile();
    }
}

void MainWindow::startDialogsAtCellFile()
{
    m_strWorkingDir = QFileInfo(fileOfProject(m_dataSet, ResultFile::Cell)).absolutePath();
}

/// Shows the lattice of a new cell as lines in both 3D views, one cell in each direction.
void MainWindow::showLattice()
{
    for (ED3DWidget* pView : views3D()) {
        pView->setLatticeRange(1, 1, 1);
        pView->setShowLatticeLines(true);
    }
    update3DViewControls();
}

void MainWindow::updateUnitCell()
{
    tessera::updateUnitCell(m_dataSet);
    {
        // The committed cell is in force again, so no transformed one is under test. The button is released
        // without its slot, which would put the committed cell in force once more.
        const QSignalBlocker blocker(m_pCellPage->m_pButtonTest);
        m_pCellPage->m_pButtonTest->setChecked(false);
    }
    for (ED3DWidget* pView : views3D()) {
        pView->setLattice(m_dataSet.m_listCellFound);
    }
    updateUnitCellInfo();
}

void MainWindow::updateUnitCellInfo()
{
    const std::optional<CellParameters> cell = cellParametersFromList(m_dataSet.m_listCell);
    for (int i = 0; i < 6; ++i) {
        m_pCellPage->m_apEditCell[i]->setText(cell ? m_locale.toString(cell->numbers()[i], 'f', 2)
                                                   : QString());
    }
    showCellFit();
    updateExpectedPeakPositionFromOrientationMatrix();
}

void MainWindow::showCellFit()
{
    QString strFit;
    guarded([&] {
        if (needsMapping(m_dataSet, m_mapping)) {
            return;  // the points are not those of the present geometry, so the label stays empty
        }
        std::optional<LatticeFit> fit;
        // At the end of a run the count is made in a thread as the run was, so that the window stays alive.
        // From the event pump of a run no further one may be started.
        if (isRunning() && !isPumping()) {
            WindowReport report(*this);
            computeAlive(report, [&](CAliveData& alive) { fit = cellResultOf(alive.dataSet()).fit; });
        } else {
            fit = cellResultOf(m_dataSet).fit;
        }
        if (fit) {
            strFit = latticeFitText(*fit, m_locale);
        }
    });
    m_pCellPage->m_pLabelCellFit->setText(strFit);
    showAgeOfLattices();
}

/// Shows the cell of the data set that has just been opened. Where it has none, the page goes back to the
/// automatic way: the manual way would begin with a made-up cell, and the user has not chosen it for these
/// data.
void MainWindow::showOpenedCell()
{
    if (m_dataSet.m_listCellFound.size() != 3) {
        m_pCellPage->m_pRadioCellAuto->setChecked(true);
    }
    updateUnitCell();
    showCellRange();
}

void MainWindow::switchtoManualUnitCellHunting(bool bTrue)
{
    const QList<Vec3D>& listCell = m_dataSet.m_listCellFound;
    if (!bTrue) {
        // On leaving, the boxes take the lengths of the cell. A box rounds its length, and where that changes
        // its number, its slot gives the vector of the cell the rounded length.
        const std::array<QDoubleSpinBox*, 3> apSpin = lengthSpins(*m_pCellPage);
        for (int i = 0; i < 3 && basisFromList(listCell) && !isPumping(); ++i) {
            if (const double dfLength = double(length(listCell[i])); apSpin[i]->value() != dfLength) {
                apSpin[i]->setValue(dfLength);
            }
        }
        return;
    }
    startManualCell();
    m_pView3DPage->m_pCheckLatticeLines->setChecked(true);
    m_pView3DPage->m_pCheckLatticePoints->setChecked(true);
    if (m_pView3DCurrent) {
        return;
    }
    // No 3D view has been looked at yet, so the check boxes act on none. Both views are set, as the boxes
    // will show what the view is set to that is looked at first.
    for (ED3DWidget* pView : views3D()) {
        pView->setShowLatticeLines(true);
        pView->setShowLatticePoints(true);
    }
}

/// Puts the made-up cell that the manual way begins with in force, if this way is chosen and there is no
/// cell.
void MainWindow::startManualCell()
{
    if (!m_pCellPage->m_pRadioCellManual->isChecked() || basisFromList(m_dataSet.m_listCellFound) ||
        isPumping()) {
        return;
    }
    m_dataSet.m_listCellFound = firstManualCell();
    updateUnitCell();
}

/// Gives a*, b* or c* (nVector 0, 1, 2) the direction that points at the viewer, and the length of its box.
void MainWindow::assignViewingDirection(int nVector)
{
    if (!m_pView3DCurrent || !basisFromList(m_dataSet.m_listCellFound) ||
        refuseDuringRun(tr("Changing the cell"))) {
        return;
    }
    m_dataSet.m_listCellFound[nVector] = scaledDouble(m_pView3DCurrent->getViewDirection(),
                                                      lengthSpins(*m_pCellPage)[nVector]->value());
    updateUnitCell();
}

void MainWindow::unitCellHuntingManualAssignRA()
{
    assignViewingDirection(0);
}

void MainWindow::unitCellHuntingManualAssignRB()
{
    assignViewingDirection(1);
}

void MainWindow::unitCellHuntingManualAssignRC()
{
    assignViewingDirection(2);
}

/// Gives a*, b* or c* (nVector 0, 1, 2) the length of its box.
void MainWindow::updateManualLength(int nVector)
{
    if (!basisFromList(m_dataSet.m_listCellFound) || refuseDuringRun(tr("Changing the cell"))) {
        return;
    }
    Vec3D& vec = m_dataSet.m_listCellFound[nVector];
    vec = atLength(vec, nVector, lengthSpins(*m_pCellPage)[nVector]->value());
    updateUnitCell();
}

void MainWindow::unitCellHuntingManualUpdateRA()
{
    updateManualLength(0);
}

void MainWindow::unitCellHuntingManualUpdateRB()
{
    updateManualLength(1);
}

void MainWindow::unitCellHuntingManualUpdateRC()
{
    updateManualLength(2);
}

void MainWindow::exportUnitCell()
{
    if (refuseDuringRun(tr("Exporting a unit cell"))) {
        return;
    }
    const QString strFile = QFileDialog::getSaveFileName(this, tr("Export Unit Cell Data to File"),
                                                         m_strWorkingDir, cellFilter());
    if (strFile.isEmpty()) {
        return;
    }
    QString strReason;
    if (saveUnitCellFile(m_dataSet, strFile, &strReason)) {
        m_strWorkingDir = QFileInfo(strFile).absolutePath();
        return;
    }
    WindowReport report(*this);
    report.addMessage(QStringLiteral("No unt cell data was saved."), Severity::Error);
    report.addMessage(strReason, Severity::Error);
}

void MainWindow::loadUnitCell()
{
    if (refuseDuringRun(tr("Loading a unit cell"))) {
        return;
    }
    const QString strFile = QFileDialog::getOpenFileName(this, tr("Load Unit Cell"), m_strWorkingDir,
                                                         cellFilter());
    if (strFile.isEmpty()) {
        return;
    }
    QString strReason;
    const QList<Vec3D> listCell = readUnitCellFile(strFile, &strReason);
    if (listCell.isEmpty()) {
        WindowReport report(*this);
        report.addMessage(QStringLiteral("Error occured when loading %1 as unit cell data.").arg(strFile),
                          Severity::Error);
        report.addMessage(strReason, Severity::Error);
        return;
    }
    m_pCellPage->m_pButtonTest->setChecked(false);
    m_dataSet.m_listCellFound = listCell;
    updateUnitCell();
    showLattice();
}

}  // namespace tessera
