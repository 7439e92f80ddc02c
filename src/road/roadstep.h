// RoadStep: a notification about the progress of a road.
#pragma once

#include "road/stageresult.h"

#include <QString>

namespace tessera {

/// The beginning or the end of a part of the road.
struct RoadStep {
    QString strPart;      ///< "open", or the name of a stage or an export
    bool bEnded = false;  ///< the part has ended, else it begins
    StageResult end;      ///< how it ended; its judgement is in the results by then
};

}  // namespace tessera
