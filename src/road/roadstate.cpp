#include "road/roadstate.h"

#include "dataset/pagerounding.h"

#include <limits>

namespace tessera {

void roundToPages(RoadState& state)
{
    roundToPages(state.dataSet);
    roundToPages(state.options.hunting);
    roundToPages(state.mapping);
    roundToPages(state.options.merging);
    roundToPages(state.options.cell);
    roundToPages(state.options.indexing);
    roundToPages(state.options.refinement);
}

void beginStage(RoadState& state, RoadStage stage)
{
    roundToPages(state);
    state.report.beginPart(roadStageName(stage));
}

void takeOver(const std::optional<double>& dfGiven, double& dfTarget)
{
    if (dfGiven) {
        dfTarget = *dfGiven;
    }
}

void takeLimit(const std::optional<double>& dfGiven, double& dfTarget, const NumberBox& box)
{
    const double dfNoLimit = std::numeric_limits<double>::infinity();
    if (dfGiven) {
        dfTarget = spinBoxValue(*dfGiven, box.nDecimals, -dfNoLimit, dfNoLimit);
    }
}

}  // namespace tessera
