// CRoadWork: a road in a thread of its own, and what it says brought to the thread of the window.
#pragma once

#include "dataset/dataset.h"
#include "road/roadlog.h"
#include "road/roadstate.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace tessera {

/// The road has a data set of its own. Lines and progress are kept until the window asks for them. At the end
/// of each part the road waits until the window has looked at its state, so that nobody reads what another
/// one writes.
class CRoadWork {
public:
    explicit CRoadWork(const RoadOptions& options);
    ~CRoadWork();
    CRoadWork(const CRoadWork&) = delete;
    CRoadWork& operator=(const CRoadWork&) = delete;

    /// Walks the road to its end, log file and all. To be called once, from the thread of the window.
    ///
    /// @param report   takes what is said; asked at least every 15 ms whether to go on
    /// @param fnStep   each step with the state as it is then; what it throws stops the road and comes out of
    ///                 here at its end
    void walk(CRunReport& report, const std::function<void(const RoadStep&, const RoadState&)>& fnStep);

    const RoadState& state() const { return m_state; }

private:
    class CRelay;
    /// What waits for the window; without an action the road has ended.
    using Action = std::function<void(CRunReport&)>;

    size_t post(const Action& action);
    void postAndWait(const Action& action);
    bool takeAction(Action& action);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Action> m_listAction;
    size_t m_nPosted = 0;
    size_t m_nDone = 0;
    bool m_bStop = false;
    bool m_bEnded = false;
    DataSet m_dataSet;
    std::unique_ptr<CRelay> m_pRelay;
    CRoadLog m_log;
    RoadState m_state;
    std::thread m_thread;
};

}  // namespace tessera
