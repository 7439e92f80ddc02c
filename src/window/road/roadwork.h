// CRoadWork: a road in a thread of its own, and what it says brought to the thread of the window.
#pragma once

#include "dataset/dataset.h"
#include "road/roadlog.h"
#include "road/roadstate.h"
#include "window/aliverun.h"

#include <functional>

namespace tessera {

/// The road has a data set of its own. At the end of each part it waits until the window has looked at its
/// state, so that nobody reads what another one writes.
class CRoadWork {
public:
    /// Opens nothing yet.
    explicit CRoadWork(const RoadOptions& options);
    CRoadWork(const CRoadWork&) = delete;
    CRoadWork& operator=(const CRoadWork&) = delete;

    /// Walks the road to its end, log file and all. To be called once, from the thread of the window.
    ///
    /// @param report   takes what is said; asked at least every 15 ms whether to go on
    /// @param fnStep   each step with the state as it is then; what it throws stops the road and comes out of
    ///                 here at its end
    void walk(CRunReport& report, const std::function<void(const RoadStep&, const RoadState&)>& fnStep);

    /// The data set and the results of the road; only while walk() is not at work on them.
    const RoadState& state() const { return m_state; }

private:
    CAliveRun m_run;
    DataSet m_dataSet;
    CRoadLog m_log;
    RoadState m_state;
};

}  // namespace tessera
