// The record of a run: a file that documents how the result files beside it were made.
#pragma once

#include "road/roadcommand.h"
#include "road/roadstate.h"

#include <QJsonObject>

namespace tessera {

/// The command that reproduces the results of a road. If the road wrote a list of hot pixels beside the
/// project, the command does not read that list, since it did not exist at the beginning.
RoadCommand commandOfRoad(const RoadState& state);

/// The results of a stage, under the keys of the summary.
/// @param strStage  name of the stage
QJsonObject foundByStage(const RoadResults& results, const QString& strStage);

/// Makes the record: version, input, parameters as used, stages with their results, files that were written,
/// and the command, under the keys described in docs/formats.md. Reads all input and result files for their
/// hashes.
///
/// @param former  the existing record, or an empty object. Of this record and those nested in it, runs whose
///                files were not all replaced by this run are kept under "former"
/// @param report  shows the progress, and can stop the reading; hashes are missing then
QJsonObject runRecord(const RoadState& state, const QJsonObject& former, CRunReport& report);

/// Writes the record of a road to the folder of its results, if that exists.
/// @return empty, or why it was not written; the results are not affected
QString writeRunRecord(const RoadState& state, CRunReport& report);

}  // namespace tessera
