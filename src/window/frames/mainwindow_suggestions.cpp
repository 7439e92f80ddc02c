// MainWindow: numbers of the pages that follow from the data.
#include "window/mainwindow.h"

#include "reciprocal/suggestcellrange.h"
#include "reciprocal/suggestframelimits.h"
#include "reciprocal/suggestmerging.h"
#include "window/alivedata.h"
#include "window/pages/cellpage.h"
#include "window/pages/mergingpage.h"
#include "window/pages/pagecontrols.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/suggestiondialog.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QSignalBlocker>
#include <QThread>

#include <utility>

namespace tessera {

namespace {

/// As the box would show it.
QString textOf(const QDoubleSpinBox& box, double dfValue)
{
    return box.textFromValue(dfValue) + box.suffix();
}

}  // namespace

bool MainWindow::holdsFrames()
{
    if (m_dataSet.m_listFrameFile.isEmpty()) {
        WindowReport(*this).addMessage(tr("There are no frames to look at: open a series first."),
                                       Severity::Error);
    }
    return !m_dataSet.m_listFrameFile.isEmpty();
}

QDoubleSpinBox* MainWindow::boxOf(const ParameterMember& member) const
{
    const Parameter* pRow = &parameterOf(member);
    for (QDoubleSpinBox* pBox : findChildren<QDoubleSpinBox*>()) {
        if (parameterOfBox(pBox) == pRow) {
            return pBox;
        }
    }
    return nullptr;
}

void MainWindow::offerSuggestion(const QString& strPage, const Suggestion& suggestion)
{
    WindowReport report(*this);
    QList<SuggestionDialog::Row> listRow;
    QList<std::pair<QDoubleSpinBox*, double>> listSet;
    for (const SuggestedValue& value : suggestion) {
        QDoubleSpinBox* pBox = boxOf(value.member);
        if (!pBox) {
            continue;
        }
        listSet.append({pBox, value.dfValue});
        const SuggestionDialog::Row row = {pBox->accessibleName(), textOf(*pBox, pBox->value()),
                                           textOf(*pBox, value.dfValue), value.strWhy};
        listRow.append(row);
        report.addMessage(tr("Suggested: %1 %2, as %3.").arg(row.strName, row.strSuggested, row.strWhy));
    }
    if (listRow.isEmpty()) {
        report.addMessage(tr("The data tell no number of \"%1\".").arg(strPage), Severity::Error);
        return;
    }
    SuggestionDialog dialog(tr("Suggested Numbers: %1").arg(strPage), listRow, this);
    if (dialog.exec() != QDialog::Accepted) {
        report.addMessage(tr("None of the suggested numbers was taken."));
        return;
    }
    for (const int nRow : dialog.chosen()) {
        report.addMessage(tr("%1 is now %2 (it was %3).")
                              .arg(listRow[nRow].strName, listRow[nRow].strSuggested, listRow[nRow].strNow));
        listSet[nRow].first->setValue(listSet[nRow].second);
    }
}

void MainWindow::suggestPeakSearch()
{
    if (!holdsFrames()) {
        return;
    }
    std::optional<Suggestion> suggestion;
    runWithButton(m_bRunning, m_pPeakSearchPage->m_pSuggestButton, [&](CRunReport& report) {
        const PeakHuntingParameters hunting = m_hunting;
        computeAlive(report, [&](CAliveData& alive) {
            suggestion = tessera::suggestPeakSearch(alive.dataSet(), hunting, m_peakFilters, alive.report(),
                                                    QThread::idealThreadCount());
        });
        if (!suggestion) {
            report.addMessage(tr("The look at the frames did not finish."), Severity::Error);
        }
    });
    if (suggestion) {
        offerSuggestion(tr("Peak Search"), *suggestion);
    }
}

void MainWindow::suggestMerging()
{
    if (refuseDuringRun(tr("A suggestion"))) {
        return;
    }
    syncParametersWithControls(true);
    Suggestion suggestion;
    guarded([&] {
        QSize size;
        if (!m_dataSet.m_vecFrameImage.empty()) {
            size = {m_dataSet.m_vecFrameImage.front()->Width(), m_dataSet.m_vecFrameImage.front()->Height()};
        }
        suggestion = tessera::suggestMerging(closestDistanceOfPeaks(m_dataSet.m_listPeakFrame)) +
                     suggestFrameLimits(m_dataSet, m_mapping, size);
    });
    offerSuggestion(tr("3D Peak Merging"), suggestion);
}

void MainWindow::suggestCellRange()
{
    if (refuseDuringRun(tr("A suggestion"))) {
        return;
    }
    Suggestion suggestion;
    guarded([&] { suggestion = tessera::suggestCellRange(m_dataSet); });
    offerSuggestion(tr("Unit Cell Range"), suggestion);
}

bool MainWindow::findRadii(CRunReport& report)
{
    std::optional<Suggestion> suggestion;
    computeAlive(report, [&](CAliveData& alive) {
        suggestion = suggestRadii(alive.dataSet(), alive.report(), std::nullopt, QThread::idealThreadCount());
    });
    if (!suggestion) {
        return false;
    }
    for (const SuggestedValue& value : qAsConst(*suggestion)) {
        QDoubleSpinBox* pBox = boxOf(value.member);
        if (pBox != m_pPeakSearchPage->m_pPeakRadiusSpin &&
            pBox != m_pPeakSearchPage->m_pBackgroundRadiusSpin) {
            continue;
        }
        report.addMessage(
            tr("%1 %2, as %3.").arg(pBox->accessibleName(), textOf(*pBox, value.dfValue), value.strWhy));
        parameterOf(value.member).setValue(parameterRecords(), value.dfValue);
        const QSignalBlocker blocker(pBox);  // a preview would read the pages, and this may be amid a run
        pBox->setValue(value.dfValue);
    }
    return true;
}

void MainWindow::autoRadiiToggled(bool bAuto)
{
    m_pPeakSearchPage->m_pPeakRadiusSpin->setDisabled(bAuto);
    m_pPeakSearchPage->m_pBackgroundRadiusSpin->setDisabled(bAuto);
    // The next hunt measures them.
    if (!bAuto || m_dataSet.m_listFrameFile.isEmpty() || isRunning() || m_bShowingState) {
        return;
    }
    bool bDone = false;
    runWithButton(m_bRunning, nullptr, [&](CRunReport& report) {
        bDone = findRadii(report);
        if (!bDone) {
            report.addMessage(tr("The look at the frames did not finish."), Severity::Error);
        }
    });
    if (bDone) {
        peakHuntingParametersChanged();
    }
}

}  // namespace tessera
