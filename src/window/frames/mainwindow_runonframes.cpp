// MainWindow: what the runs that load frame after frame and go by m_bRunning have in common.
#include "window/mainwindow.h"

#include "records/runreport.h"
#include "records/timestamp.h"

#include <QPushButton>

#include <utility>

namespace tessera {

bool MainWindow::runOnFrames(QPushButton* pButton, const std::function<void(CRunReport&)>& fnRun)
{
    bool bBegun = false;
    runWithButton(m_bRunning, pButton, [&](CRunReport& report) {
        bBegun = true;
        if (!m_bRunning) {  // a second click, as soon as the button said "Stop"
            report.addMessage(tr("%1>The run was stopped before its first frame.").arg(currentTimeStamp()),
                              Severity::Error);
            return;
        }
        clearFrameMarks();
        fnRun(report);
    });
    return bBegun;
}

bool MainWindow::stopsRun()
{
    return isPumping() && std::exchange(m_bRunning, false);
}

}  // namespace tessera
