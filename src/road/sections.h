// Sections of the road: planes of reciprocal space by the geometry that was found, as driver and window have
// them.
#pragma once

#include "dataset/dataset.h"
#include "integration/reciprocalsection.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"
#include "road/roadstate.h"

#include <vector>

namespace tessera {

/// Makes sections by the refined geometry where there is one, else by the cell in force and what the mapping
/// works with. Refuses, with the reason in the report, without a cell, tilts or shifts.
/// @param refined      may be null
/// @param listSection  replaced when the run finished, else as it was
RunOutcome findSections(const DataSet& dataSet, const MappingParameters& mapping,
                        const GeometryRefinement* refined, const std::vector<SectionPlane>& listPlane,
                        const SectionOptions& options, int nJobs, CRunReport& report,
                        std::vector<ReciprocalSection>& listSection);

/// The files of sections: MRC and PNG of each in turn.
QStringList sectionFiles(const DataSet& dataSet, const std::vector<SectionPlane>& listPlane);

/// Makes the sections that were asked for, writes their files and notes both in the results.
/// @return true if all files are written; else the log says why
bool writeSectionsOfRoad(RoadState& state);

}  // namespace tessera
