#include "window/aliverun.h"

#include <chrono>
#include <thread>
#include <utility>

namespace tessera {

namespace {

const std::chrono::milliseconds g_patience(15);  // an answer to a click comes within 60

}  // namespace

/// Long texts come to the log in pieces, because a table of thousands of lines would block the window for
/// longer than a click may wait.
void CAliveRun::addMessage(const QString& strText, Severity severity)
{
    const int nMostLines = 50;
    for (int nFrom = 0; nFrom >= 0;) {
        int nEnd = nFrom - 1;
        for (int nLines = 0; nLines < nMostLines && (nLines == 0 || nEnd >= 0); ++nLines) {
            nEnd = strText.indexOf(QLatin1Char('\n'), nEnd + 1);
        }
        const QString strPiece = strText.mid(nFrom, nEnd < 0 ? -1 : nEnd - nFrom);
        post([=](CRunReport& report) { report.addMessage(strPiece, severity); });
        nFrom = nEnd < 0 ? -1 : nEnd + 1;
    }
}

void CAliveRun::addHtml(const QString& strHtml, Severity severity)
{
    post([=](CRunReport& report) { report.addHtml(strHtml, severity); });
}

void CAliveRun::startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar)
{
    post([=](CRunReport& report) { report.startProgress(strFormat, nMinimum, nMaximum, bTaskBar); });
}

void CAliveRun::setProgress(int nValue)
{
    post([=](CRunReport& report) { report.setProgress(nValue); });
}

void CAliveRun::endProgress()
{
    post([](CRunReport& report) { report.endProgress(); });
}

bool CAliveRun::goOn()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const size_t nMine = ++m_nAsked;
    m_changed.notify_all();
    m_changed.wait(lock, [&] { return m_nAnswered >= nMine; });
    return !m_bStop;
}

void CAliveRun::inWindow(const std::function<void()>& fn)
{
    std::exception_ptr thrown;
    const size_t nMine = post([&](CRunReport&) {
        try {
            fn();
        } catch (...) {
            thrown = std::current_exception();
        }
    });
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [&] { return m_nDone >= nMine; });
    if (thrown) {
        std::rethrow_exception(thrown);
    }
}

void CAliveRun::guardInWindow(const std::function<void()>& fn)
{
    inWindow([&] { guard(fn); });
}

/// @return its number
size_t CAliveRun::post(const Action& action)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listAction.push_back(action);
    m_changed.notify_all();
    return ++m_nPosted;
}

/// Waits a little for something to do.
/// @return false when the run has ended and all is done
bool CAliveRun::takeAction(Action& action)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, g_patience,
                       [&] { return !m_listAction.empty() || m_nAsked > m_nAnswered || m_bEnded; });
    action = nullptr;
    if (!m_listAction.empty()) {
        action = m_listAction.front();
        m_listAction.pop_front();
    }
    return action || !m_bEnded;
}

void CAliveRun::answer(bool bGoOn)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bStop = m_bStop || !bGoOn;
    m_nAnswered = m_nAsked;
    m_changed.notify_all();
}

/// Runs a part of the window's work. An exception ends the run, and is reported only after the run has ended.
void CAliveRun::guard(const std::function<void()>& fn)
{
    try {
        fn();
    } catch (...) {
        m_thrown = std::current_exception();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bStop = true;
    }
}

void CAliveRun::run(CRunReport& report, const std::function<void()>& fnWork)
{
    m_bStop = m_bEnded = false;
    std::exception_ptr thrownByWork;
    std::thread thread([&] {
        try {
            fnWork();
        } catch (...) {
            thrownByWork = std::current_exception();
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bEnded = true;
        m_changed.notify_all();
    });
    auto last = std::chrono::steady_clock::now();
    for (Action action; takeAction(action);) {
        if (action) {
            guard([&] { action(report); });
            const std::lock_guard<std::mutex> lock(m_mutex);
            ++m_nDone;
            m_changed.notify_all();
        }
        // Hundreds of lines may wait, so events are let through between them, but not after each. A question
        // comes after the lines that were said before it.
        const auto now = std::chrono::steady_clock::now();
        if (!action || now - last > g_patience) {
            last = now;
            bool bGoOn = false;
            guard([&] { bGoOn = report.goOn(); });
            answer(bGoOn);
        }
    }
    thread.join();
    report.noteReason(reason());
    const std::exception_ptr thrown = std::exchange(m_thrown, nullptr);
    if (thrown || thrownByWork) {
        std::rethrow_exception(thrown ? thrown : thrownByWork);
    }
}

}  // namespace tessera
