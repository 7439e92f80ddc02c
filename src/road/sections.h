// Sections of reciprocal space, as made by the driver and the window.
#pragma once

#include "dataset/dataset.h"
#include "integration/reciprocalsection.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"
#include "road/roadstate.h"

#include <vector>

namespace tessera {

/// Makes sections with the refined geometry if there is one, else with the cell in force and the geometry of
/// the mapping. Refuses, with the reason in the report, without cell, tilts or shifts.
/// @param refined  may be null
RunResult<std::vector<ReciprocalSection>> findSections(
    const DataSet& dataSet, const MappingParameters& mapping, const GeometryRefinement* refined,
    const std::vector<SectionPlane>& listPlane, const SectionOptions& options, int nJobs, CRunReport& report);

/// The paths of the files of sections: MRC and PNG for each section in turn.
QStringList sectionFiles(const DataSet& dataSet, const std::vector<SectionPlane>& listPlane);

/// Makes the sections of the options, writes their files, and puts sections and files into the results.
/// @return true if all files were written; else the log has the reason
bool writeSectionsOfRoad(RoadState& state);

}  // namespace tessera
