// Stages to run: the stages that must be run so that no result is stale any more.
#pragma once

#include "workstate/workstatus.h"

#include <QString>

#include <vector>

namespace tessera {

/// The stages to run so that all results up to the indexing exist and none is stale. The refinement of the
/// geometry and the integration are optional: they are included only if their results are stale. Empty if
/// drift or peaks are missing, since the whole road has to be run then.
std::vector<WorkStage> stagesToRun(const std::vector<StageStatus>& listStatus);

/// The stages as a phrase for the user: "Map, merge and index anew".
QString stagesText(const std::vector<WorkStage>& listStage, const std::vector<StageStatus>& listStatus);

}  // namespace tessera
