// StageResult: how a stage of the road ended, with the reason if it did not finish.
#pragma once

#include "records/runoutcome.h"

namespace tessera {

/// Finished means that all files of the stage were written. The reason is a line of the log.
using StageResult = RunOutcome;

}  // namespace tessera
