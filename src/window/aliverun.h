// CAliveRun: a run in a thread of its own, and what it says brought to the
// thread of the window.
#pragma once

#include "records/runreport.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>

namespace tessera {

/// The report that a run in a thread speaks to. What it says comes to the
/// report of the window in the same order, by the window's thread, which
/// handles its events meanwhile. Where the run asks whether to go on it waits
/// until events were handled, as if it had handled them itself: what was asked
/// for by then is heeded.
class CAliveRun : public CRunReport {
public:
    /// Calls fnWork in a thread and comes back when that has ended. To be called
    /// from the thread of the window, once at a time. What fnWork throws comes
    /// out here.
    ///
    /// @param report  takes what is said, its reason too; asked at least every 15
    /// ms whether to go on
    void run(CRunReport& report, const std::function<void()>& fnWork);

    /// Has fn done by the thread of the window and waits for its end; to be
    /// called from that of the run. What fn throws comes out here.
    void inWindow(const std::function<void()>& fn);
    /// The same for a run that nothing may be thrown through: what fn throws
    /// stops the run and comes out of run() at its end.
    void guardInWindow(const std::function<void()>& fn);

    /// A text of many lines comes to the window's report as several of fewer lines.
    void addMessage(const QString& strText, Severity severity = Severity::Info) override;
    void addHtml(const QString& strHtml, Severity severity = Severity::Info) override;
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar = false) override;
    void setProgress(int nValue) override;
    void endProgress() override;
    bool goOn() override;

private:
    using Action = std::function<void(CRunReport&)>;

    size_t post(const Action& action);
    bool takeAction(Action& action);
    void answer(bool bGoOn);
    void guard(const std::function<void()>& fn);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Action> m_listAction;
    size_t m_nPosted = 0;
    size_t m_nDone = 0;
    size_t m_nAsked = 0;
    size_t m_nAnswered = 0;
    bool m_bStop = false;
    bool m_bEnded = false;
    std::exception_ptr m_thrown;  ///< by the thread of the window
};

}  // namespace tessera
