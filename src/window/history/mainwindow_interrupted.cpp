// MainWindow: its work kept on the disk, and what a crash has interrupted brought back.
#include "dataset/pagerounding.h"
#include "window/history/interrupteddialog.h"
#include "window/history/workhistory.h"
#include "window/history/workkeeper.h"
#include "window/mainwindow.h"
#include "window/windowreport.h"

#include <QFileInfo>
#include <QMessageBox>

namespace tessera {

void MainWindow::keepWork(const QString& strFolder)
{
    m_pKeeper = new WorkKeeper(strFolder, this);
    for (const WorkHistory* pHistory : findChildren<WorkHistory*>()) {
        connect(pHistory, &WorkHistory::stepNoted, m_pKeeper, &WorkKeeper::keep);
    }
    connect(m_pKeeper, &WorkKeeper::failed, this, [this](const QString& strReason) {
        WindowReport(*this).addMessage(
            tr("This work could not be kept, so a crash would cost it: %1").arg(strReason),
            Severity::Warning);
    });
    QStringList listReason;
    std::vector<Leftover> listLeftover = m_pKeeper->leftovers(listReason);
    for (const QString& strReason : qAsConst(listReason)) {
        WindowReport(*this).addMessage(strReason, Severity::Warning);
    }
    if (listLeftover.empty()) {
        return;
    }
    auto* pDialog = new InterruptedDialog(
        std::move(listLeftover), [this](Leftover& leftover) { return restoreWork(leftover); },
        QDate::currentDate(), m_locale, this);
    connect(pDialog, &InterruptedDialog::notRemoved, this, [this](const QString& strFile) {
        WindowReport(*this).addMessage(tr("%1 cannot be removed.").arg(strFile), Severity::Error);
    });
    pDialog->show();
}

/// Saves the present results of "Solve" for recovery; this is not a step for undo.
void MainWindow::keepStage(const QString& strStage)
{
    if (!m_pKeeper) {
        return;
    }
    guarded([&] {
        WorkState state = workState();
        // A stage may end with more decimals than its boxes show: what follows reads the boxes.
        DataSet rounded;
        rounded.takeSeries(state.series);
        roundToPages(rounded);
        state.series = rounded;
        m_pKeeper->keep(state, strStage);
    });
}

/// Another series is open: there is nothing to restore of the former one.
void MainWindow::forgetKeptWork()
{
    if (m_pKeeper) {
        m_pKeeper->forget();
    }
}

/// Shows an interrupted work, with a line for what is no longer as it was.
/// @return false, with a red line, where it cannot be read or a run is under way; the leftover then stays
bool MainWindow::restoreWork(Leftover& leftover)
{
    if (refuseDuringRun(tr("Restoring interrupted work"))) {
        return false;
    }
    const QString strOpen = QFileInfo(projectFile()).fileName();
    if (m_pHistory->steps().count() > 1 &&
        QMessageBox::question(this, tr("Restore"),
                              tr("%1 is open, and its steps will be gone. Restore %2 all the same?")
                                  .arg(strOpen.isEmpty() ? tr("Another work") : strOpen,
                                       leftover.work.strName)) != QMessageBox::Yes) {
        return false;
    }
    WindowReport report(*this);
    std::optional<WorkState> state;
    QString strReason;
    bool bShown = false;
    guarded([&] {
        state = readKeptState(leftover.work, &strReason);
        if (!state) {
            report.addMessage(tr("The work cannot be restored: %1").arg(strReason), Severity::Error);
            return;
        }
        bShown = showWorkState(*state);
    });
    if (!bShown) {
        return false;
    }
    for (const QString& strLine : changesSince(leftover.work, *state)) {
        report.addMessage(strLine, Severity::Warning);
    }
    report.addMessage(
        tr("%1 is restored as it was after \"%2\".").arg(leftover.work.strName, leftover.work.strStep));
    if (QFileInfo::exists(projectFile())) {
        enterRecentSeries({projectFile()});
    }
    const QString strStep = leftover.work.strStep;
    m_pKeeper->keepInPlaceOf(workState(), strStep, std::move(leftover));
    return true;
}

}  // namespace tessera
