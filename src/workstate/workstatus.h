// Work status: which stages of the way from frames to intensities are done, stale or missing.
#pragma once

#include "dataset/dataset.h"
#include "records/runparameters.h"

#include <QString>

#include <vector>

namespace tessera {

enum class WorkStage { Drift, Peaks, Axis, Mapping, Merging, Cell, Indexing, Geometry, Integration };

enum class StageState {
    Missing,  ///< there is no result
    Done,     ///< there is one, and it goes with what it stands on
    Stale     ///< there is one, but what it stands on has changed since
};

struct StageStatus {
    WorkStage stage = WorkStage::Drift;
    StageState state = StageState::Missing;
    QString strReason;  ///< a part of a sentence: what there is, what has changed, or what is missing
};

/// The numbers that the next runs would take from the pages.
struct WorkNumbers {
    PeakHuntingParameters hunting;
    MappingParameters mapping;
    PeakMergingParameters merging;
    IndexingParameters indexing;
};

/// All stages in their order, by what the lists were made with (MadeWith). A list that came from a file, so
/// that nobody knows its numbers, counts as done. What stands on a stale stage is stale.
std::vector<StageStatus> workStatus(const DataSet& dataSet, const WorkNumbers& numbers);

/// What moves the points of reciprocal space from one mapping to another, such as "the rotation axis was
/// turned by 0.3°"; empty where nothing does.
QString mappingChange(const PeakMapping& then, const PeakMapping& now);

}  // namespace tessera
