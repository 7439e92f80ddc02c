// MainWindow: the reference region and the run of the shift evaluation.
#include "window/mainwindow.h"

#include "frames/shiftevaluation.h"
#include "frameview/originalimgscene.h"
#include "window/alivedata.h"
#include "window/pages/framespage.h"
#include "window/pages/peaksearchpage.h"
#include "window/pages/shiftpage.h"
#include "window/waitalive.h"
#include "window/windowactions.h"
#include "window/windowreport.h"

#include <QCheckBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStatusBar>
#include <QTableWidget>
#include <QThread>

namespace tessera {

void MainWindow::selSizeChanged2()
{
    if (isPumping()) {  // what is shown need not be the frame
        m_gate.wishes().bRegion = true;
        return;
    }
    const int nIndex = m_pActions->selectionIndex();
    m_pFrameScene->setSelectionIndex(nIndex);
    const bool bRegion = m_pFrameScene->selectionIndex() > 0;
    m_pShiftPage->m_pRunButton->setEnabled(bRegion);
    if (bRegion) {
        return;
    }
    selRectChanged({});
    const QSize size = m_pFrameScene->imageSize();
    const QSize sizeRegion = m_pFrameScene->selectionRects().value(nIndex).size().toSize();
    if (nIndex > 0 && !size.isEmpty()) {
        statusBarMessage(tr("No region: %1×%2 pixels are more than the frame has, %3×%4.")
                             .arg(sizeRegion.width())
                             .arg(sizeRegion.height())
                             .arg(size.width())
                             .arg(size.height()));
    }
}

void MainWindow::selRectChanged(QRectF rectSel)
{
    if (rectSel.isEmpty()) {  // a region that was put away has no place
        if (statusBar()->currentMessage().startsWith(QLatin1String("ROI:"))) {
            statusBarMessage({});
        }
        return;
    }
    statusBarMessage(tr("ROI: %L1, %L2, %L3, %L4")
                         .arg(int(rectSel.left()))
                         .arg(int(rectSel.top()))
                         .arg(int(rectSel.right()))
                         .arg(int(rectSel.bottom())));
}

void MainWindow::runShiftEvaluation()
{
    bool bRunning = false;  // of this call: a second click finds none to clear, as the run has no stop
    bool bBegun = false;
    bool bFinished = false;
    QList<QRectF> listPlace;  // of the regions: showing one of them in place of the frame centres them all
    runWithButton(bRunning, nullptr, [&](CRunReport& report) {
        bBegun = true;
        const QRectF rectRegion = m_pFrameScene->selectionRect();
        m_pActions->m_listSelection.first()->setChecked(true);
        listPlace = m_pFrameScene->selectionRects();
        // Marks belong to the frame, not to the regions that the run shows in its place.
        clearFrameMarks();
        showPeakHuntingMask(false);
        {
            const QSignalBlocker blocker(m_pShiftPage->m_pShiftTable);
            m_pShiftPage->m_pShiftTable->clearContents();
            m_pShiftPage->m_pShiftTable->setRowCount(0);
        }
        const auto showFrame = [&](const QPointF& ptShift) {
            appendShiftRow(ptShift);
            m_pShiftPage->m_pShiftTable->scrollToBottom();
            refreshImageView();
            waitAlive(report, [this] { return m_pFramesPage->m_pPlayDelaySpin->value(); });
        };
        ShiftEvaluationOptions options;
        options.nJobs = QThread::idealThreadCount();
        computeAlive(report, [&](CAliveData& alive) {
            const auto fnFrameDone = [&](int /*nFrame*/, const QPointF& ptShift, const CImgObj<float>&) {
                alive.show([&] { showFrame(ptShift); });
            };
            bFinished = tessera::runShiftEvaluation(alive.dataSet(), rectRegion, alive.report(), options,
                                                    fnFrameDone)
                            .end == RunEnd::Finished;
        });
        syncParametersWithControls(false);
    });
    if (!bBegun) {
        return;
    }
    // A region that was chosen meanwhile is where the presets were before the run.
    m_pFrameScene->setSelectionIndex(0);
    m_pFrameScene->setSelectionRects(listPlace);
    selSizeChanged2();
    if (!bFinished) {
        fillShiftTable();  // the shifts that stand, be they the old ones
    }
    mapWaitingPeaks();
    showPeakHuntingMask(m_pPeakSearchPage->m_pShowMaskCheck->isChecked());
}

}  // namespace tessera
