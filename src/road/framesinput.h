// Frames as input: a series without a project, whose headers tell what a project would.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Puts the frames into the place of the folders and files of many images among the input, and gathers what
/// they tell. The results of a folder are called after it, or after what the names of its frames begin with;
/// where a project of this name stands that a user made, after that and "_frames", so that nothing of it is
/// replaced. Nothing is done for a project.
///
/// A folder with frames of several sizes leaves them all in listSizeFound, and those of the first one among
/// the input, unless options.sizeFrame chooses another. Each size is to be a run by itself, with results that
/// are called after it. Sizes of one or two frames beside others are left out, with a doubt that the log
/// tells.
/// @return empty, or why there are no frames
QString takeFramesOfInput(RoadOptions& options);

/// What the results of a size are called, behind the name of the series: "_512x512".
QString nameOfSize(const QSize& size);

/// Puts into the data set what the frames tell and no option does, each number with a line of the log that
/// names its source, and says what is doubtful. A told axis is only mentioned, as its sense is not certain.
void takeFacts(RoadState& state);

/// Writes NAME.ed3d beside the results where the series had no project: what the frames and the options tell,
/// and the axis as soon as it is known. A project of this name that was not made here stays, with a line.
/// @return false, with the reason, when it cannot be written
bool writeMadeProject(RoadState& state);

}  // namespace tessera
