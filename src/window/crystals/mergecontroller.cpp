#include "window/crystals/mergecontroller.h"

#include "crystals/mergefile.h"
#include "crystals/mergeplace.h"
#include "crystals/resultfolders.h"
#include "records/whatwasthrown.h"
#include "window/crystals/listenedreport.h"
#include "window/crystals/mergedialog.h"
#include "window/crystals/mergeinput.h"
#include "window/crystals/mergeresultview.h"
#include "window/integration/tablepanel.h"
#include "window/messageedit.h"

#include <QPushButton>
#include <QSettings>
#include <QTabWidget>

namespace tessera {

MergeController::MergeController(const MergeHost& host, QObject* pParent) : QObject(pParent), m_host(host) {}

void MergeController::makeDialog()
{
    m_pDialog = new MergeDialog(m_host.pParent);
    MergeInput* pInput = m_pDialog->m_pInput;
    pInput->restore(*m_host.fnSettings());
    connect(pInput, &MergeInput::foldersGiven, this, &MergeController::read);
    connect(pInput, &MergeInput::changed, this, &MergeController::updateButtons);
    connect(pInput->m_pButtonSeries, &QPushButton::clicked, this, &MergeController::addSeries);
    connect(m_pDialog, &MergeDialog::dropped, pInput, &MergeInput::giveFolders);
    connect(m_pDialog->m_pButtonMerge, &QPushButton::clicked, this, &MergeController::merge);
    connect(m_pDialog->m_pButtonReport, &QPushButton::clicked, this, &MergeController::openReport);
    connect(m_pDialog, &QDialog::finished, this, &MergeController::close);
    connect(m_pDialog->m_pResult, &MergeResultView::openWished, this, m_host.fnOpen);
    connect(m_pDialog->m_pResult, &MergeResultView::notSaved, this, &MergeController::complain);
    for (TablePanel* pTable : {pInput->m_pTable, pInput->m_pTableUnread}) {
        connect(pTable, &TablePanel::notSaved, this, &MergeController::complain);
    }
}

void MergeController::showWindow()
{
    if (!m_pDialog) {
        makeDialog();
    }
    QString strReason;
    const bool bSeries = !m_host.fnSeriesFolder(&strReason).isEmpty();
    m_pDialog->m_pInput->m_pButtonSeries->setToolTip(bSeries ? tr("Adds the results of the open project.")
                                                             : strReason);
    m_pDialog->show();
    m_pDialog->raise();
    m_pDialog->activateWindow();
}

void MergeController::close()
{
    if (m_pStop) {
        *m_pStop = true;
    }
    if (m_pDialog) {
        m_pDialog->m_pInput->keep(*m_host.fnSettings());
        m_pDialog->hide();
    }
}

void MergeController::addSeries()
{
    QString strReason;
    const QString strFolder = m_host.fnSeriesFolder(&strReason);
    if (strFolder.isEmpty()) {
        m_pDialog->showFault(strReason);
        return;
    }
    m_pDialog->m_pInput->giveFolders({strFolder});
}

/// What was asked for before and is not read yet is read with it.
void MergeController::read(const QStringList& listFolder)
{
    m_listToRead += listFolder;
    m_listToRead.removeDuplicates();
    updateButtons();
    m_pDialog->showState(tr("Reading..."));
    m_reading.start([this, listGiven = m_listToRead, strOut = m_pDialog->m_pInput->outFolder()](
                        const BackgroundJob::Stop& bStop, const BackgroundJob::FnShow& fnShow) {
        const ResultFolders found = findResultFolders(listGiven, strOut);
        for (const UnreadCrystal& unread : found.listUnread) {
            fnShow([this, unread] { m_pDialog->m_pInput->takeFolder({unread.strName, {}, {unread}}); });
        }
        const int nAll = found.listFolder.size();
        for (int n = 0; n < nAll && !bStop; ++n) {
            ListedFolder folder;
            try {
                folder = listedFolder(found.listFolder[n]);
            } catch (...) {
                folder = {found.listFolder[n], {}, {{found.listFolder[n], whatWasThrown()}}};
            }
            fnShow([this, folder, n, nAll] { takeRead(folder, n + 1, nAll); });
        }
        fnShow([this, listNote = found.listNote] {
            m_listToRead.clear();
            m_pDialog->showState(listNote.join(QLatin1Char('\n')));
            m_pDialog->m_pInput->showFolders();
        });
    });
}

/// Tables of hundreds of rows are made anew now and then alone.
void MergeController::takeRead(const ListedFolder& folder, int nDone, int nAll)
{
    const int nOften = 10;
    m_pDialog->m_pInput->takeFolder(folder);
    m_pDialog->showState(tr("Read %1 of %2 folders").arg(nDone).arg(nAll));
    if (nDone <= nOften || nDone % nOften == 0) {
        m_pDialog->m_pInput->showFolders();
    }
}

void MergeController::say(const QString& strText, Severity severity)
{
    m_pDialog->addLine(strText, severity);
    if (severity != Severity::Info) {
        m_host.fnSay(strText, severity);
    }
}

void MergeController::complain(const QString& strReason)
{
    m_pDialog->showFault(strReason);
    say(strReason, Severity::Error);
}

void MergeController::merge()
{
    if (m_pStop) {
        *m_pStop = true;
        m_pDialog->m_pButtonMerge->setEnabled(false);
        m_pDialog->showState(tr("Stopping..."));
        return;
    }
    const CrystalsJobOptions options = m_pDialog->m_pInput->options();
    m_pDialog->m_pLog->clear();
    const QString strMisplaced = misplacedMerge(options);
    if (!strMisplaced.isEmpty()) {  // hours of merging would be lost on it
        complain(tr("Files to: %1.").arg(strMisplaced));
        return;
    }
    m_pStop = std::make_shared<BackgroundJob::Stop>(false);
    m_pDialog->setMerging(true);
    m_pDialog->showProgress(QString(), 0, 0);
    m_pDialog->showState(tr("Merging..."));
    updateButtons();
    MergeListener listener;
    listener.fnSay = [this](const QString& strText, Severity severity) { say(strText, severity); };
    listener.fnProgress = [this](const QString& strFormat, int nDone, int nAll) {
        m_pDialog->showProgress(strFormat, nDone, nAll);
    };
    m_merging.start([this, options, listener, pStop = m_pStop](const BackgroundJob::Stop& bEnd,
                                                               const BackgroundJob::FnShow& fnShow) {
        CListenedReport report(bEnd, pStop, fnShow, listener);
        auto pResult = std::make_shared<CrystalsJobResult>();
        RunOutcome outcome;
        try {
            CMergePlace place;
            const QString strNoPlace = place.take(options);
            outcome = strNoPlace.isEmpty() ? mergeFolders(options, report, *pResult)
                                           : RunOutcome{RunEnd::Refused, tr("Files to: %1.").arg(strNoPlace)};
            if (outcome.finished()) {
                outcome = writeMerged(options, place, report, *pResult);
            }
        } catch (...) {  // out of memory
            outcome = {RunEnd::Failed, whatWasThrown()};
        }
        if (!outcome.strReason.isEmpty() && report.reason() != outcome.strReason) {
            report.addMessage(outcome.strReason, Severity::Error);
        }
        fnShow([this, options, outcome, pResult] { ended(options, outcome, pResult); });
    });
}

void MergeController::ended(const CrystalsJobOptions& options, const RunOutcome& outcome,
                            const std::shared_ptr<const CrystalsJobResult>& pResult)
{
    m_pStop.reset();
    m_pDialog->setMerging(false);
    if (outcome.end == RunEnd::Stopped) {
        m_pDialog->showFault(tr("Stopped."));
        say(tr("The merging of crystals was stopped."), Severity::Warning);
    } else {
        const bool bShown = !pResult->listCrystal.empty();
        if (bShown) {
            m_pDialog->m_pResult->setResult(pResult, options.tolerance);
            m_pDialog->m_pTabs->setCurrentWidget(m_pDialog->m_pResult);
        }
        const bool bGood = outcome.finished() && outcome.strReason.isEmpty();
        if (bGood) {
            m_pDialog->showState(tr("Written to %1").arg(options.strOutFolder));
        } else {
            m_pDialog->showFault(outcome.strReason);
        }
        if (outcome.finished()) {
            say(tr("Crystals merged. %1 Files: %2").arg(mergedSummary(*pResult), options.strOutFolder),
                Severity::Milestone);
        }
    }
    updateButtons();
}

void MergeController::updateButtons()
{
    const MergeInput* pInput = m_pDialog->m_pInput;
    const bool bInput = pInput->m_pTable->rowCount() > 0 && !pInput->outFolder().isEmpty() && !isReading();
    m_pDialog->setReady(isMerging() ? !*m_pStop : bInput, !reportFile().isEmpty());
}

QString MergeController::reportFile() const
{
    const CrystalsJobResult* pResult = m_pDialog->m_pResult->result();
    for (const QString& strFile : pResult ? pResult->listFile : QStringList()) {
        if (strFile.endsWith(mergeSuffix(MergeFile::Report))) {
            return strFile;
        }
    }
    return {};
}

void MergeController::openReport()
{
    const QString strFile = reportFile();
    if (!strFile.isEmpty()) {
        m_host.fnOpen(strFile);
    }
}

}  // namespace tessera
