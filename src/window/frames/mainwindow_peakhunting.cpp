// MainWindow: the run of peak hunting and its preview on the frame in view.
#include "window/mainwindow.h"

#include "frames/framehunt.h"
#include "frames/peakhunting.h"
#include "frames/peakpositions.h"
#include "frames/smoothedimage.h"
#include "frameview/originalimgscene.h"
#include "window/alivedata.h"
#include "window/pages/peaksearchpage.h"
#include "window/tabwidget.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QLabel>
#include <QStatusBar>
#include <QThread>

namespace tessera {

namespace {

const int g_nCrossSize = 5;

}  // namespace

void MainWindow::runPeakHunting()
{
    runWithButton(m_bHuntingRunning, m_pPeakSearchPage->m_pRunButton, [&](CRunReport& report) {
        clearFrameMarks();
        if (m_hunting.m_bAutoRadii && !findRadii(report)) {
            report.addMessage(tr("Peak hunting did not finish."), Severity::Error);
            return;
        }
        const PeakHuntingParameters hunting = m_hunting;
        computeAlive(report, [&](CAliveData& alive) {
            PeakHuntingOptions options;
            options.nJobs = QThread::idealThreadCount();
            options.fnFrameDone = [&](int, const QList<Peak3D>& listPeak) {
                alive.show([&] { showHuntedFrame(listPeak); });
            };
            options.fnAfterStored = [&] { alive.show([&] { showHuntedPeaks(report); }); };
            tessera::runPeakHunting(alive.dataSet(), hunting, m_peakFilters, alive.report(), options);
        });
    });
}

void MainWindow::showHuntedFrame(const QList<Peak3D>& listPeak)
{
    if (!m_pPeakSearchPage->m_pShowPeaksCheck->isChecked()) {
        clearCrossMarks();
        clearCircleMarks();
        return;
    }
    showCrossMarks(peakPositions(listPeak), Qt::green, g_nCrossSize);
    refreshImageView();
}

/// Maps and merges them, still within the run.
void MainWindow::showHuntedPeaks(CRunReport& report)
{
    m_rawGroups.forget();
    forgetLattices();
    transformPeaksTo3D();
    showPeaksIn3D();
    if (m_dataSet.m_listShift.size() == m_dataSet.m_listPeakFrame.size()) {
        peakReduction3D();
    } else {
        report.addMessage(tr("The peaks are kept, but have no place in reciprocal space yet: run the "
                             "shift evaluation, or load a shift file, and then merge."),
                          Severity::Error);
    }
    m_pTabWidget->setCurrentIndex(1);
    tellUnknownAxis(report);
}

void MainWindow::testCurrentPatternForPeaks()
{
    if (isFrameInUse()) {  // and so are the filters
        return;
    }
    WindowReport report(*this);
    if (m_dataSet.m_vecFrameImage.empty()) {
        report.addMessage(QStringLiteral("No image is loaded."), Severity::Error);
        return;
    }
    syncParametersWithControls(true);
    guarded([this] {
        FrameHuntWork work;
        const FramePeaks peaks = huntFrame(*m_dataSet.m_vecFrameImage.front(), m_hunting,
                                           m_dataSet.m_maskPeakHunting, m_peakFilters, work);
        if (!peaks.bHunted) {
            return;
        }
        QList<QPointF> listPos;
        listPos.reserve(peaks.listX.size());
        for (int i = 0; i < peaks.listX.size(); ++i) {
            listPos.append({peaks.listX[i], peaks.listY[i]});
        }
        showCrossMarks(listPos, Qt::green, g_nCrossSize);
        m_pFrameScene->update();
        m_pPeakSearchPage->m_pLiveLabel->setText(
            tr("follow the boxes: %L1").arg(peaks.bTooMany ? 0 : listPos.size()));
        // In the status bar, as the preview comes with each frame and each turn of a number.
        const QString strTooMany = tr(
            "More than 1 % of the pixels are peak candidates, which is noise: none is used. Raise the "
            "threshold.");
        if (peaks.bTooMany) {
            statusBarMessage(strTooMany);
        } else if (statusBar()->currentMessage() == strTooMany) {
            statusBarMessage({});
        }
    });
}

void MainWindow::peakHuntingParametersChanged()
{
    if (m_pPeakSearchPage->m_pShowPeaksCheck->isChecked()) {
        testCurrentPatternForPeaks();
    }
}

void MainWindow::visualMoniteringPeakHuntingToggled(bool bEnabled)
{
    if (bEnabled) {
        testCurrentPatternForPeaks();
        return;
    }
    clearCrossMarks();
    refreshImageView();
}

void MainWindow::refreshPeakMarks()
{
    if (m_pPeakSearchPage->m_pShowPeaksCheck->isChecked()) {
        testCurrentPatternForPeaks();
        return;
    }
    clearCrossMarks();
    m_pFrameScene->update();
}

void MainWindow::outputSmoothedImage(const QString& strFileName)
{
    if (m_dataSet.m_vecFrameImage.empty() || isPumping()) {
        return;
    }
    syncParametersWithControls(true);
    WindowReport report(*this);
    tessera::outputSmoothedImage(*m_dataSet.m_vecFrameImage.front(), m_hunting, m_peakFilters, strFileName,
                                 report);
}

}  // namespace tessera
