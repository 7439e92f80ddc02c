// StageResult: how a stage of the road ended, and why if it did not reach its end.
#pragma once

#include "records/runoutcome.h"

namespace tessera {

/// Finished means that what the stage was to write is on the disk. The reason is a line of the log.
using StageResult = RunOutcome;

}  // namespace tessera
