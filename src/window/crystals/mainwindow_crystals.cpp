// MainWindow: the merging of many crystals, which has a controller of its own.
#include "crystals/resultfolders.h"
#include "window/crystals/mergecontroller.h"
#include "window/mainwindow.h"
#include "window/messageedit.h"
#include "window/windowactions.h"

#include <QAction>
#include <QDesktopServices>
#include <QSettings>
#include <QUrl>

namespace tessera {

void MainWindow::createCrystals()
{
    MergeHost host;
    host.pParent = this;
    host.fnSeriesFolder = [this](QString* pstrReason) {
        const QString strFolder = m_dataSet.m_strProjectDir;
        if (strFolder.isEmpty()) {
            *pstrReason = tr("No project is open.");
        } else if (!holdsRuns(strFolder)) {
            *pstrReason = tr("The open project has no results yet: \"Solve\" makes them.");
        } else {
            return strFolder;
        }
        return QString();
    };
    host.fnSay = [this](const QString& strText, Severity severity) {
        m_pMessageEdit->addMessage(strText, severity == Severity::Milestone ? Qt::blue : Qt::red);
    };
    host.fnOpen = [](const QString& strFile) { QDesktopServices::openUrl(QUrl::fromLocalFile(strFile)); };
    host.fnSettings = [] { return std::unique_ptr<QSettings>(makeSettings()); };
    m_pCrystals = new MergeController(host, this);
    connect(m_pActions->m_pMergeCrystals, &QAction::triggered, m_pCrystals, &MergeController::showWindow);
    m_pActions->setReady(m_pActions->m_pMergeCrystals);
    m_pActions->setInForce(m_pActions->m_pMergeCrystals, true);
}

}  // namespace tessera
