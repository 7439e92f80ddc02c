// RoadStep: what the road does now, for whoever looks on.
#pragma once

#include "road/stageresult.h"

#include <QString>

namespace tessera {

/// The beginning or the end of a part of the road.
struct RoadStep {
    QString strPart;      ///< "open", a stage or an export, as summaries call them
    bool bEnded = false;  ///< false: it begins
    StageResult end;      ///< how it ended; its judgement stands in the results by then
};

}  // namespace tessera
