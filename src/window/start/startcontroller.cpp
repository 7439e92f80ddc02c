#include "window/start/startcontroller.h"

#include "window/start/recentseries.h"
#include "window/start/startpage.h"

#include <QCommandLinkButton>
#include <QDir>
#include <QPushButton>

#include <utility>

namespace tessera {

StartController::StartController(StartHost host, QWidget* pView, const DemoOptions& demo, QObject* pParent)
    : QObject(pParent), m_host(std::move(host)), m_pPage(new StartPage(pView)), m_demo(demo)
{
    connect(m_pPage->m_pOpenButton, &QAbstractButton::clicked, this, [this] { m_host.fnOpen(); });
    connect(m_pPage->m_pNewButton, &QAbstractButton::clicked, this, [this] { m_host.fnNewProject(); });
    connect(m_pPage, &StartPage::seriesWanted, this,
            [this](const QStringList& listFile) { m_host.fnOpenFiles(listFile); });
    connect(m_pPage, &StartPage::removalWanted, this, [this](const QStringList& listFile) {
        removeRecentSeries(*m_host.fnSettings(), listFile);
        m_host.fnListChanged();
    });

    connect(m_pPage->m_pDemoButton, &QAbstractButton::clicked, &m_demo, &DemoSeries::start);
    connect(m_pPage->m_pStopDemoButton, &QAbstractButton::clicked, &m_demo, &DemoSeries::stop);
    connect(&m_demo, &DemoSeries::progress, this, [this](int nFrames, int nAll) {
        m_pPage->showDemo(true);
        m_pPage->setDemoProgress(nFrames, nAll);
    });
    connect(&m_demo, &DemoSeries::made, this, &StartController::demoMade);
    connect(&m_demo, &DemoSeries::stopped, this, [this] { m_pPage->showDemo(false); });
    connect(&m_demo, &DemoSeries::failed, this, [this](const QString& strReason) {
        m_pPage->showDemo(false);
        m_host.fnComplain(strReason);
    });
}

void StartController::setDataSetOpen(bool bOpen)
{
    m_bOpen = bOpen;
    m_pPage->setVisible(!bOpen);
}

void StartController::updateRecent()
{
    m_pPage->setRecent(recentSeries(*m_host.fnSettings()));
}

/// Opens the demo, unless something else has been opened meanwhile.
void StartController::demoMade(const QString& strProject)
{
    m_pPage->showDemo(false);
    if (m_bOpen) {
        m_host.fnSay(tr("The demo series is made: %1").arg(QDir::toNativeSeparators(strProject)));
    } else {
        m_host.fnOpenFiles({strProject});
    }
}

}  // namespace tessera
