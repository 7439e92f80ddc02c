#include "window/road/roadwork.h"

#include "road/road.h"

namespace tessera {

CRoadWork::CRoadWork(const RoadOptions& options) : m_log(m_run), m_state(options, m_dataSet, m_log) {}

void CRoadWork::walk(CRunReport& report, const std::function<void(const RoadStep&, const RoadState&)>& fnStep)
{
    m_state.fnStep = [this, fnStep](const RoadStep& step) {
        m_run.guardInWindow([&] { fnStep(step, m_state); });
    };
    m_run.run(report, [this] {
        runRoad(m_state);
        endRoad(m_state, m_log);
    });
}

}  // namespace tessera
