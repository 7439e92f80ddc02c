// MainWindow: what the runs that load frame after frame and hold m_bRunning have in common.
#include "window/mainwindow.h"

#include "records/runreport.h"
#include "records/timestamp.h"

#include <QPushButton>

#include <utility>

namespace tessera {

bool MainWindow::runOnFrames(QPushButton* pButton, const std::function<void(CRunReport&)>& fnRun)
{
    bool bBegun = false;
    runWithButton(m_dataSet.m_bRunning, pButton, [&](CRunReport& report) {
        bBegun = true;
        // The run sets the flag itself, and takes one that stands already for a second click.
        if (!std::exchange(m_dataSet.m_bRunning, false)) {
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
    return isPumping() && std::exchange(m_dataSet.m_bRunning, false);
}

}  // namespace tessera
