// MainWindow: what all runs have in common, and what waits for their end.
#include "frameview/baseimgview.h"
#include "records/whatwasthrown.h"
#include "window/history/workhistory.h"
#include "window/mainwindow.h"
#include "window/messageedit.h"
#include "window/pages/cellpage.h"
#include "window/runflag.h"
#include "window/tabwidget.h"
#include "window/windowreport.h"

#include <QIcon>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

namespace tessera {

void MainWindow::runWithButton(bool& bFlag, QPushButton* pButton,
                               const std::function<void(CRunReport&)>& fnRun)
{
    stopImagePlay();
    syncParametersWithControls(true);
    CRunFlag flag(bFlag);
    if (!flag.isHeld() || refuseDuringRun(QStringLiteral("Another run"))) {
        return;
    }
    // The statistics of an indexing leave another space group in the data set.
    m_dataSet.m_spaceGroup.setSpaceGroup(m_indexing.m_nSpaceGroup);
    {
        CRunScope scope(*this, FrameAfterRun::Reload);
        if (pButton) {
            setButtonStatus(pButton, ButtonStatus::running);
        }
        WindowReport report(*this, &bFlag);
        guarded([&] { fnRun(report); });
        flag.release();
    }
    if (pButton) {
        setButtonStatus(pButton, ButtonStatus::ready);
    }
}

void MainWindow::setButtonStatus(QPushButton* pButton, ButtonStatus status)
{
    const char* const pszText = "textWhenReady";
    const char* const pszIcon = "iconWhenReady";
    if (pButton && status == ButtonStatus::ready) {
        pButton->setText(pButton->property(pszText).toString());
        pButton->setIcon(pButton->property(pszIcon).value<QIcon>());
    } else if (pButton && status == ButtonStatus::running) {
        pButton->setProperty(pszText, pButton->text());
        pButton->setProperty(pszIcon, pButton->icon());
        pButton->setText(QStringLiteral("Stop"));
        pButton->setIcon(QIcon(QStringLiteral(":/images/stop.png")));
    }
    pumpEvents();
}

void MainWindow::guarded(const std::function<void()>& fn)
{
    try {
        fn();
    } catch (...) {  // out of memory: the window and its data go on
        m_pMessageEdit->addMessage(whatWasThrown(), Qt::red);
    }
}

void MainWindow::pumpEvents()
{
    m_gate.pumpEvents();
}

bool MainWindow::refuseDuringRun(const QString& strWhat)
{
    if (!isPumping()) {
        return false;
    }
    const QString strText =
        QStringLiteral("%1 has to wait: a run is under way. Stop it first, or let it end.").arg(strWhat);
    m_pMessageEdit->addMessage(strText, Qt::red);
    statusBarMessage(strText);
    return true;
}

bool MainWindow::isFrameInUse()
{
    if (!isPumping()) {
        return false;
    }
    if (m_gate.wishes().nFrame == 0) {
        m_gate.wishes().nFrame = m_pFrameSpin->value();
    }
    return true;
}

void MainWindow::catchUpAfterRun(FrameAfterRun frame)
{
    const RunWishes wishes = m_gate.takeWishes();
    if (wishes.bClose) {
        // From the event loop: the slot of the run is still on the stack.
        QMetaObject::invokeMethod(this, "close", Qt::QueuedConnection);
        return;
    }
    if (wishes.bEndCellTest) {
        const QSignalBlocker blocker(m_pCellPage->m_pButtonTest);
        m_pCellPage->m_pButtonTest->setChecked(false);
        testUnitCellToggled(false);
    }
    startManualCell();
    showCellRange();
    showCellFit();
    if (wishes.bRemap) {
        recalculate3DPeakPositionsAndUpdateView();
    } else if (wishes.bShow) {
        showPeaksIn3D();
    }
    const int nFrames = m_dataSet.m_listFrameFile.size();
    if (wishes.nFrame >= 1 && wishes.nFrame <= nFrames) {
        switchToImgIndex(wishes.nFrame);
    } else if (frame == FrameAfterRun::Reload && nFrames > 0 &&
               m_pTabWidget->currentWidget() == m_pFrameView) {
        switchToImgIndex(m_pFrameSlider->value());  // a run leaves the last frame that it visited
    }
    if (wishes.bRegion) {
        selSizeChanged2();  // on the frame, not on what the run showed in its place
    }
    m_timerStatus.start();
    keepWindowMemory();
}

/// Records changes made before a run as a separate step.
MainWindow& MainWindow::CRunScope::looked(MainWindow& window)
{
    window.m_pHistory->look();
    return window;
}

MainWindow::CRunScope::CRunScope(MainWindow& window, FrameAfterRun frame)
    : m_window(looked(window)), m_frame(frame), m_nOuterPump(window.m_gate.enter())
{
    window.m_pHistory->busyChanged();
    if (frame == FrameAfterRun::Reload) {
        window.leaveSeriesPicture();  // the run shows frames
    }
}

MainWindow::CRunScope::~CRunScope()
{
    if (m_window.m_gate.leave(m_nOuterPump)) {
        m_window.guarded([this] { m_window.catchUpAfterRun(m_frame); });
    }
    m_window.m_pHistory->busyChanged();
}

}  // namespace tessera
