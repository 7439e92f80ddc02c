// MainWindow: the integration, which has a controller of its own, and what that needs of the window.
#include "frameview/baseimgview.h"
#include "road/seriesintensities.h"
#include "window/alivedata.h"
#include "window/integration/integrationcontroller.h"
#include "window/integration/qualitytab.h"
#include "window/mainwindow.h"
#include "window/messageedit.h"
#include "window/pages/integrationpage.h"
#include "window/reciprocal/peaktableview.h"
#include "window/tabwidget.h"
#include "window/windowreport.h"

#include <QSpinBox>
#include <QThread>

namespace tessera {

void MainWindow::createIntegration()
{
    auto* pTab = new QualityTab(m_pTabWidget);
    m_pTabWidget->addTab(pTab, m_mapTabName[4]);

    IntegrationHost host;
    host.pData = &m_dataSet;
    host.pPage = findChild<IntegrationPage*>();
    host.pTab = pTab;
    host.pTable = m_pPeakTableView;
    host.pFrameView = m_pFrameView;
    host.fnRun = [this](QPushButton* pButton, const IntegrationHost::FnWithReport& fn) {
        runWithButton(m_bRunning, pButton, fn);
    };
    host.fnLook = [this](const IntegrationHost::FnWithReport& fn) {
        if (isPumping()) {  // the frames are the run's; the click was no more than a look
            return;
        }
        CRunScope scope(*this);
        WindowReport report(*this);
        guarded([&] { fn(report); });
    };
    host.fnComplain = [this](const QString& strReason) { m_pMessageEdit->addMessage(strReason, Qt::red); };
    host.fnFrameInView = [this] {
        return m_dataSet.m_vecFrameImage.empty() || isPumping() ? -1 : m_pFrameSpin->value() - 1;
    };
    giveIntegrationRuns(host);
    host.fnBreathe = [this] { pumpEvents(); };
    m_pIntegration = new IntegrationController(host, this);
    connect(this, &MainWindow::frameLoaded, m_pIntegration,
            [this](int nFrame, bool bLoaded) { m_pIntegration->showDiscs(bLoaded ? nFrame - 1 : -1); });
}

/// What reads frames: it computes in a thread, on a copy of the data set.
void MainWindow::giveIntegrationRuns(IntegrationHost& host)
{
    host.fnProfile = [this](const IntegrationResult& result, const Observation& observation,
                            CRunReport& report, ObservationProfile& profile) {
        std::optional<ObservationProfile> looked;
        computeAlive(report, [&](CAliveData& alive) {
            looked = lookAtObservation(alive.dataSet(), result.series, result.integrated.model, observation,
                                       alive.report());
        });
        if (looked) {
            profile = std::move(*looked);
        }
        return looked.has_value();
    };
    host.fnIntegrate = [this](const IntensityOptions& options, CRunReport& report,
                              IntegrationResult& result) {
        RunOutcome outcome;
        const MappingParameters mapping = m_mapping;
        const GeometryMade made = madeWithGeometry(m_dataSet);
        computeAlive(report, [&](CAliveData& alive) {
            RunResult<IntegrationResult> found = intensitiesOfSeries(
                alive.dataSet(), mapping, options, QThread::idealThreadCount(), alive.report());
            outcome = found.outcome;
            if (found.finished()) {
                result = std::move(*found.made);
            }
        });
        if (outcome.finished()) {
            m_dataSet.m_made.integration = made;
        }
        return outcome;
    };
    host.fnWrite = [this](const IntegrationResult& result, const IntensityOptions& options,
                          CRunReport& report, QString* pstrReason) {
        bool bWritten = false;
        computeAlive(report, [&](CAliveData& alive) {
            bWritten = writeIntensities(alive.dataSet(), result, options, {}, alive.report(), pstrReason)
                           .has_value();
        });
        return bWritten;
    };
}

}  // namespace tessera
