#include "road/stages.h"

namespace tessera {

StageResult runStage(RoadStage stage, RoadState& state)
{
    switch (stage) {
        case RoadStage::Shifts:
            return runShiftStage(state);
        case RoadStage::Peaks:
            return runPeakStage(state);
        case RoadStage::Merge:
            return runMergeStage(state);
        case RoadStage::Cell:
            return runCellStage(state);
        case RoadStage::Index:
            return runIndexStage(state);
        case RoadStage::Geometry:
            return runGeometryStage(state);
        case RoadStage::Integrate:
            return runIntegrateStage(state);
        case RoadStage::Refine:
            return runRefineStage(state);
    }
    return {};
}

}  // namespace tessera
