// Stages to run: what is to be done so that nothing is stale any more.
#pragma once

#include "workstate/workstatus.h"

#include <QString>

#include <vector>

namespace tessera {

/// The stages to run anew, or for the first time, so that everything up to the indexing is there and nothing
/// is stale; those that nothing asks for, a refinement of the geometry and an integration, where they are
/// stale. None where drift or peaks are missing, as that is the whole road.
std::vector<WorkStage> stagesToRun(const std::vector<StageStatus>& listStatus);

/// These stages as a user would say it: "Map, merge and index anew".
QString stagesText(const std::vector<WorkStage>& listStage, const std::vector<StageStatus>& listStatus);

}  // namespace tessera
