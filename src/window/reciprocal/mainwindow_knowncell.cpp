// MainWindow: the orientation of a crystal whose cell is known.
#include "road/knowncellsearch.h"
#include "window/alivedata.h"
#include "window/knowncelldialog.h"
#include "window/mainwindow.h"
#include "window/pages/cellpage.h"
#include "window/windowreport.h"

#include <QPushButton>

namespace tessera {

void MainWindow::searchKnownCell()
{
    if (refuseDuringRun(tr("Looking for a known cell"))) {
        return;
    }
    syncParametersWithControls(true);
    const auto fnSearch = [this](const CellParameters& cell, const KnownCellOptions& options,
                                 const bool& bGoOn) {
        KnownCellSearchResult result;
        result.end = {RunEnd::Failed, tr("The search did not come to an end.")};
        if (refuseDuringRun(tr("Looking for a known cell"))) {
            return result;
        }
        CRunScope scope(*this);
        WindowReport report(*this, &bGoOn);
        report.goOn();
        mapPeaksAnew(tr("They are mapped anew before the search."), report);
        guarded([&] {
            computeAlive(report, [&](CAliveData& alive) {
                result = orientCell(alive.dataSet(), cell, alive.report(), options);
            });
        });
        return result;
    };
    KnownCellDialog dialog(fnSearch, m_strWorkingDir, this);
    if (m_knownCell) {
        dialog.setCell(*m_knownCell);
    }
    const bool bTake = dialog.exec() == QDialog::Accepted && dialog.result().orientation;
    m_knownCell = dialog.cell();
    if (!bTake || refuseDuringRun(tr("Changing the cell"))) {
        return;
    }
    m_pCellPage->m_pButtonTest->setChecked(false);
    CRunScope scope(*this);
    WindowReport report(*this);
    StageResult taken = {RunEnd::Failed, {}};
    guarded([&] {
        computeAlive(report, [&](CAliveData& alive) {
            taken = takeOrientedCell(alive.dataSet(), *dialog.result().orientation, dialog.form(),
                                     alive.report(), m_strLatticeHost);
        });
        if (taken.finished()) {
            saveProjectCell(report);
        }
    });
    if (taken.finished()) {
        updateUnitCell();
        showLattice();
    }
}

}  // namespace tessera
