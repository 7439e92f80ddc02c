// MainWindow: the lattice of the cell in force, its symmetry, and further lattices in the peaks.
#include "reciprocal/latticepoints.h"
#include "reciprocal/mapping.h"
#include "records/progress.h"
#include "view3d/ed3dwidget.h"
#include "window/alivedata.h"
#include "window/crystal/latticelook.h"
#include "window/crystal/latticesdialog.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QThread>

namespace tessera {

namespace {

const int g_nDigitsOfMatrix = 12;  // thirds bring back the cell to more than the digits of its file

LatticeAnalysis analyse(const QList<Vec3D>& listCell, const LatticePoints& listPoint, int nMostLattices,
                        CRunReport& report)
{
    const CProgress progress(report, MainWindow::tr("Looking at the lattice"), 0, 0);
    FurtherLatticesOptions options;
    options.nMostLattices = nMostLattices;
    options.search.nJobs = QThread::idealThreadCount();
    report.goOn();  // the display comes up
    return analyseLattice(latticeBasisOf(*basisFromList(listCell)), listPoint, options,
                          [&report] { return report.goOn(); });
}

void tellTypes(const LatticeAnalysis& analysis, CRunReport& report)
{
    report.addMessage(QStringLiteral("Bravais types that fit the lattice; * is proposed:"));
    for (const QString& strLine : tableOfTypes(analysis)) {
        report.addMessage(strLine);
    }
    for (const QString& strLine : tellWholeLattice(analysis.whole)) {
        report.addMessage(strLine);
    }
}

}  // namespace

void MainWindow::showLattices()
{
    m_pLatticesDialog->show();
    m_pLatticesDialog->raise();
    m_pLatticesDialog->activateWindow();
    if (!m_bRunning) {  // else it would be the wish to stop
        runLatticeAnalysis();
    }
}

void MainWindow::runLatticeAnalysis()
{
    runWithButton(m_bRunning, m_pLatticesDialog->m_pButtonRun, [this](CRunReport& report) {
        m_pCellPage->m_pButtonTest->setChecked(false);
        if (!cellInForce(m_dataSet)) {
            report.addMessage(QStringLiteral("Unit cell information is missing."), Severity::Error);
            return;
        }
        mapAnewIfNeeded(report);
        LatticeLook look;
        look.listCell = m_dataSet.m_listCell;
        const LatticePoints listPoint = latticePoints(m_dataSet);
        if (listPoint.empty()) {
            report.addMessage(tr("There are no mapped peaks: only the cell itself is looked at."));
        }
        computeAlive(report, [&](CAliveData& alive) {
            look.analysis = analyse(look.listCell, listPoint, FurtherLatticesOptions().nMostLattices,
                                    alive.report());
            look.peaks = CPeaksOfLattices(alive.dataSet(), look.analysis.lattices.vecLabel);
        });
        tellTypes(look.analysis, report);
        for (const QString& strLine : tellFurtherLattices(look.analysis.lattices)) {
            report.addMessage(strLine, Severity::Milestone);
        }
        if (!report.goOn()) {
            report.addMessage(tr("The search for further lattices did not finish."), Severity::Error);
        }
        const bool bColors = m_pLatticesDialog->m_pCheckColors->isChecked();
        forgetLattices();
        *m_pLatticeLook = look;
        m_pLatticesDialog->setLook(look);
        m_pLatticesDialog->m_pCheckColors->setChecked(bColors);
    });
}

/// Peaks whose shifts, beam or geometry have changed are no points of one lattice.
void MainWindow::mapAnewIfNeeded(CRunReport& report)
{
    if (!m_rawGroups.holdsPeaks() || !canMapPeaks(m_dataSet) || !needsMapping(m_dataSet, m_mapping)) {
        return;
    }
    report.addMessage(
        tr("Shifts, direct beam or geometry have changed since the peaks were mapped. They "
           "are mapped anew."));
    const MappingParameters mapping = m_mapping;
    computeAlive(report, [&](CAliveData& alive) {
        tessera::transformPeaksTo3D(alive.dataSet(), mapping, alive.report());
    });
    m_gate.wishes().bShow = true;  // after the run
}

/// False, with a red line, where the cell has changed since it was looked at.
bool MainWindow::isLookOfCell()
{
    if (m_pLatticeLook->listCell == m_dataSet.m_listCellFound) {
        return true;
    }
    WindowReport(*this).addMessage(
        tr("The unit cell is another one than the table of lattices belongs to. \"Run\" there looks anew."),
        Severity::Error);
    return false;
}

/// Shows in the window of the lattices which of its results no longer belong to the present cell and peaks.
void MainWindow::showAgeOfLattices()
{
    LookAge age = LookAge::Current;
    if (!m_pLatticeLook->listCell.isEmpty()) {
        if (!m_pLatticeLook->peaks.isOf(m_dataSet) || needsMapping(m_dataSet, m_mapping)) {
            age = LookAge::EarlierPeaks;
        } else if (m_pLatticeLook->listCell != m_dataSet.m_listCellFound) {
            age = LookAge::EarlierCell;
        }
    }
    m_pLatticesDialog->setAge(age);
}

void MainWindow::fillMatrixFromLattices()
{
    const int nType = m_pLatticesDialog->selectedType();
    if (nType < 0 || nType >= int(m_pLatticeLook->analysis.listType.size()) ||
        refuseDuringRun(tr("Filling the matrix")) || !isLookOfCell()) {
        return;
    }
    const CMatrix3 matrix = pageMatrix(m_pLatticeLook->analysis.listType[nType],
                                       m_pCellPage->m_pRadioSpaceReciprocal->isChecked());
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int nColumn = 0; nColumn < 3; ++nColumn) {
            QLineEdit* pEdit = m_pCellPage->m_apEditMatrix[nRow][nColumn];
            pEdit->setText(m_locale.toString(matrix.at(nRow, nColumn), 'g', g_nDigitsOfMatrix));
            pEdit->setCursorPosition(0);  // the first digits are the ones to be seen
        }
    }
    unitCellTransformatinMatrixEdited();  // a test under way goes on with it
}

void MainWindow::takeLongerCell()
{
    const std::vector<LongerCell> listCell = longerCells(m_pLatticeLook->analysis.whole);
    const int nCoset = m_pLatticesDialog->selectedCoset();
    if (nCoset < 0 || nCoset >= int(listCell.size()) || refuseDuringRun(tr("Changing the cell")) ||
        !isLookOfCell()) {
        return;
    }
    takeCellOfLattices(listCell[nCoset].matBasis, tr("The longer cell is in force: %1"));
}

void MainWindow::chooseLattice()
{
    const int nLattice = m_pLatticesDialog->selectedLattice();
    const std::vector<OneOfLattices>& listLattice = m_pLatticeLook->analysis.lattices.listLattice;
    if (nLattice < 0 || nLattice >= int(listLattice.size()) || refuseDuringRun(tr("Changing the cell"))) {
        return;
    }
    takeCellOfLattices(listLattice[nLattice].matBasis, tr("Lattice %1 is in force: %2").arg(nLattice + 1));
}

/// Puts a cell in force as a search does, and brings types and cosets into line with it; the lattices stay,
/// so that another one can be chosen.
/// @param strMessage  with a place for the cell
void MainWindow::takeCellOfLattices(const LatticeBasis& matBasis, const QString& strMessage)
{
    runWithButton(m_bRunning, m_pLatticesDialog->m_pButtonRun, [&](CRunReport& report) {
        m_pCellPage->m_pButtonTest->setChecked(false);
        m_dataSet.m_listCellFound = reciprocalBasisOf(matBasis).toList();
        updateUnitCell();
        showLattice();
        QStringList listNumber;
        for (const double dfNumber : cellOf(matBasis).numbers()) {
            listNumber.append(m_locale.toString(dfNumber, 'f', listNumber.size() < 3 ? 3 : 2));
        }
        report.addMessage(strMessage.arg(tr("a=%1 Å, b=%2 Å, c=%3 Å, α=%4°, β=%5°, γ=%6°")
                                             .arg(listNumber[0], listNumber[1], listNumber[2], listNumber[3],
                                                  listNumber[4], listNumber[5])),
                          Severity::Milestone);
        saveProjectCell(report);
        const LatticeAnalysis former = m_pLatticeLook->analysis;
        LatticeLook look = *m_pLatticeLook;
        look.listCell = m_dataSet.m_listCell;
        computeAlive(report, [&](CAliveData& alive) {
            look.analysis = analyse(look.listCell, latticePoints(alive.dataSet()), 1, alive.report());
        });
        look.analysis.lattices = former.lattices;
        tellTypes(look.analysis, report);
        *m_pLatticeLook = look;
        m_pLatticesDialog->setLook(look);
    });
}

void MainWindow::showLatticeColors(bool bShow)
{
    if (refuseDuringRun(tr("Changing the groups of peaks"))) {
        const QSignalBlocker blocker(m_pLatticesDialog->m_pCheckColors);
        m_pLatticesDialog->m_pCheckColors->setChecked(!bShow);
        return;
    }
    guarded([&] {
        hideLatticeColors();
        if (bShow) {
            applyLatticeColors();
        }
    });
}

/// Shows the groups of lattices in those views whose points are the peaks that were assigned to lattices.
void MainWindow::applyLatticeColors()
{
    const CPeaksOfLattices& peaks = m_pLatticeLook->peaks;
    const auto nLattices = int(m_pLatticeLook->analysis.lattices.listLattice.size());
    if (!peaks.isOf(m_dataSet)) {
        forgetLattices();
        return;
    }
    const auto groups = [&](const QList<QList<int>>& listPlaces) {
        QList<PointGroup> listGroup;
        for (int n = 0; n < listPlaces.size(); ++n) {
            listGroup.append({tr("Lattice %1").arg(n + 1), listPlaces[n], LatticesDialog::colorOf(n)});
        }
        return listGroup;
    };
    if (m_rawGroups.holdsPeaks()) {
        m_colorsRaw.show(*m_pView3DRaw, groups(peaks.amongPeaks(m_pView3DRaw->points(), nLattices)));
    }
    if (!m_dataSet.m_listPeakChain.isEmpty()) {
        m_colorsMerged.show(
            *m_pView3DMerged,
            groups(peaks.amongReflections(m_pView3DMerged->points(), m_dataSet.m_listPeakChain, nLattices)));
    }
}

void MainWindow::hideLatticeColors()
{
    m_colorsRaw.hide(*m_pView3DRaw);
    m_colorsMerged.hide(*m_pView3DMerged);
}

/// Calls `fn`, which changes points or groups of the views, with the former groups put back meanwhile.
void MainWindow::withoutLatticeColors(const std::function<void()>& fn)
{
    const bool bShown = m_colorsRaw.isShown() || m_colorsMerged.isShown();
    if (bShown) {
        hideLatticeColors();
    }
    fn();
    if (bShown) {
        applyLatticeColors();
    }
}

/// For the editing of groups, which are not the user's own while lattices are shown: true, with a red line.
bool MainWindow::refuseUnderLatticeColors(const ED3DWidget* pView)
{
    if (!(pView == m_pView3DRaw ? m_colorsRaw : m_colorsMerged).isShown()) {
        return false;
    }
    WindowReport(*this).addMessage(
        tr("The groups are those of lattices. Switch \"Colours\" of the window \"Lattices\" off first."),
        Severity::Error);
    return true;
}

/// Before peaks or lattices are replaced: the former groups come back, and the look is given up.
void MainWindow::forgetLattices()
{
    hideLatticeColors();
    *m_pLatticeLook = LatticeLook();
    m_pLatticesDialog->setLook(*m_pLatticeLook);
    const QSignalBlocker blocker(m_pLatticesDialog->m_pCheckColors);
    m_pLatticesDialog->m_pCheckColors->setChecked(false);
}

}  // namespace tessera
