#include "frames/framewalk.h"

#include "records/runends.h"
#include "records/whatwasthrown.h"

namespace tessera {

void CFrameWalk::showProgress(ProgressPlace place, int nMinimum)
{
    m_progress.emplace(m_report, QStringLiteral("%v/%m"), nMinimum, m_nFrames, place);
}

RunOutcome CFrameWalk::run(const std::function<bool(int nFrame)>& fnFrame)
{
    RunEnd end = RunEnd::Failed;
    try {
        end = walk(fnFrame);
    } catch (...) {
        m_report.fail(whatWasThrown());
    }
    m_progress.reset();
    return end == RunEnd::Failed ? failedAsSaid(m_report) : RunOutcome{end, {}};
}

RunEnd CFrameWalk::walk(const std::function<bool(int nFrame)>& fnFrame)
{
    const bool bBefore = m_stopAsked == StopAsked::BeforeEachFrame;
    for (m_nDone = 0; m_nDone < m_nFrames;) {
        if (m_progress) {
            m_progress->set(m_nDone + 1);
        }
        if (bBefore && !m_report.goOn()) {
            return RunEnd::Stopped;
        }
        if (!fnFrame(m_nDone)) {
            return RunEnd::Failed;
        }
        ++m_nDone;
        if (bBefore) {
            continue;
        }
        if (!m_report.goOn() && (m_nDone < m_nFrames || m_stopAsked == StopAsked::AfterEachFrame)) {
            return RunEnd::Stopped;
        }
    }
    return RunEnd::Finished;
}

}  // namespace tessera
