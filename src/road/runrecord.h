// The record of a run: the companion of its result files, by which anybody can tell how they were made.
#pragma once

#include "road/roadcommand.h"
#include "road/roadstate.h"

#include <QJsonObject>

namespace tessera {

/// The command that makes the results of a road again. Where the road listed the hot pixels that it found
/// beside the project, it is told to leave that list unread, as it was not there at the beginning.
RoadCommand commandOfRoad(const RoadState& state);

/// What the stage of a name found, under the keys of the summary.
QJsonObject foundByStage(const RoadResults& results, const QString& strStage);

/// Version, inputs, parameters as used, stages with what they found, files that were written, and the
/// command, under the keys that docs/formats.md tells. Reads all inputs and files for their hashes.
///
/// @param former  the record that stands there, or none. Of it, and of those that it holds, the runs stay
///                under "former" that wrote a file which this run has not written anew
/// @param report  has the progress, and may stop the reading: hashes are missing then
QJsonObject runRecord(const RoadState& state, const QJsonObject& former, CRunReport& report);

/// Writes the record of a road beside its results, where their folder is there.
/// @return empty, or why it was not written; no result is the worse for that
QString writeRunRecord(const RoadState& state, CRunReport& report);

}  // namespace tessera
