// Work status: which stages of the way from frames to intensities are done, stale or missing.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

#include <QString>

#include <vector>

namespace tessera {

/// The stages from frames to intensities, in the order of processing.
enum class WorkStage { Drift, Peaks, Axis, Mapping, Merging, Cell, Indexing, Geometry, Integration };

/// Whether a stage has a result that is up to date.
enum class StageState {
    Missing,  ///< there is no result
    Done,     ///< there is a result, and its inputs are unchanged
    Stale     ///< there is a result, but its inputs have changed since
};

/// A stage with its state.
struct StageStatus {
    WorkStage stage = WorkStage::Drift;
    StageState state = StageState::Missing;
    QString strReason;  ///< a phrase: what the result is, which input has changed, or what is missing
};

/// The parameters on the pages, which the next runs would use.
struct WorkNumbers {
    PeakHuntingParameters hunting;
    MappingParameters mapping;
    PeakMergingParameters merging;
    IndexingParameters indexing;
};

/// The status of all stages, in their order. A stage is stale if its inputs differ from those recorded with
/// its result (MadeWith). Mapping and merging are stale, moreover, with the peaks, the cell with the merging,
/// and the indexing with either of these; geometry and integration depend on mapping and cell in force alone.
/// Peaks, a cell and indices whose parameters are not known, as they come from a file, count as done, but
/// reflections that were not merged from the peaks count as missing.
std::vector<StageStatus> workStatus(const DataSet& dataSet, const WorkNumbers& numbers);

/// What has changed in the mapping so that the points in reciprocal space move, as a phrase such as "the
/// rotation axis was turned by 0.3°"; empty if nothing has.
QString mappingChange(const PeakMapping& then, const PeakMapping& now);

}  // namespace tessera
