#include "window/road/roadwork.h"

#include "road/road.h"

#include <chrono>
#include <exception>

namespace tessera {

/// What the road says, from its own thread.
class CRoadWork::CRelay : public CRunReport {
public:
    explicit CRelay(CRoadWork& work) : m_work(work) {}

    void addMessage(const QString& strText, Severity severity) override
    {
        m_work.post([=](CRunReport& report) { report.addMessage(strText, severity); });
    }
    void addHtml(const QString& strHtml, Severity severity) override
    {
        m_work.post([=](CRunReport& report) { report.addHtml(strHtml, severity); });
    }
    void startProgress(const QString& strFormat, int nMinimum, int nMaximum, bool bTaskBar) override
    {
        m_work.post(
            [=](CRunReport& report) { report.startProgress(strFormat, nMinimum, nMaximum, bTaskBar); });
    }
    void setProgress(int nValue) override
    {
        m_work.post([=](CRunReport& report) { report.setProgress(nValue); });
    }
    void endProgress() override
    {
        m_work.post([](CRunReport& report) { report.endProgress(); });
    }
    bool goOn() override
    {
        const std::lock_guard<std::mutex> lock(m_work.m_mutex);
        return !m_work.m_bStop;
    }

private:
    CRoadWork& m_work;
};

CRoadWork::CRoadWork(const RoadOptions& options)
    : m_pRelay(std::make_unique<CRelay>(*this)), m_log(*m_pRelay), m_state(options, m_dataSet, m_log)
{}

CRoadWork::~CRoadWork() = default;

/// @return its number
size_t CRoadWork::post(const Action& action)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_listAction.push_back(action);
    m_changed.notify_all();
    return ++m_nPosted;
}

void CRoadWork::postAndWait(const Action& action)
{
    const size_t nMine = post(action);
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [&] { return m_nDone >= nMine; });
}

/// Waits a little for something to do.
/// @return false when the road has ended and all is done
bool CRoadWork::takeAction(Action& action)
{
    const std::chrono::milliseconds patience(15);  // an answer to a click comes within 60
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, patience, [&] { return !m_listAction.empty() || m_bEnded; });
    action = nullptr;
    if (!m_listAction.empty()) {
        action = m_listAction.front();
        m_listAction.pop_front();
    }
    return action || !m_bEnded;
}

void CRoadWork::walk(CRunReport& report, const std::function<void(const RoadStep&, const RoadState&)>& fnStep)
{
    m_state.fnStep = [this, fnStep](const RoadStep& step) {
        postAndWait([this, fnStep, step](CRunReport&) { fnStep(step, m_state); });
    };
    m_thread = std::thread([this] {
        runRoad(m_state);
        endRoad(m_state, m_log);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bEnded = true;
        m_changed.notify_all();
    });
    std::exception_ptr thrown;
    auto last = std::chrono::steady_clock::now();
    for (Action action; takeAction(action);) {
        if (action) {
            try {
                action(report);
            } catch (...) {  // the road must come to its end before anybody may leave
                thrown = std::current_exception();
            }
            const std::lock_guard<std::mutex> lock(m_mutex);
            ++m_nDone;
            m_changed.notify_all();
        }
        // Hundreds of lines may wait: events are let through between them, but not after each.
        const auto now = std::chrono::steady_clock::now();
        if (!action || now - last > std::chrono::milliseconds(15)) {
            last = now;
            const bool bGoOn = report.goOn() && !thrown;
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_bStop = m_bStop || !bGoOn;
        }
    }
    m_thread.join();
    if (thrown) {
        std::rethrow_exception(thrown);
    }
}

}  // namespace tessera
