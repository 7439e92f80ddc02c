// Frames as input: series without a project, described by the headers of their frames.
#pragma once

#include "road/roadstate.h"

namespace tessera {

/// Replaces folders and multi-image files in the input by their frames, and reads the headers of the frames.
/// The results are named after the folder, or after the common start of the frames' names; if a project of
/// that name exists that the user made, "_frames" is appended, so that none of its files is replaced. A
/// project as input is left as it is.
///
/// If a folder has frames of several sizes, all sizes are listed in listSizeFound, and the input becomes the
/// frames of the first size, or of options.sizeFrame if that is set. Each size is to be run by itself; its
/// results have the size in their names. A size with only one or two frames is left out if there are others,
/// and the log will mention it.
/// @return empty, or why there are no frames
QString takeFramesOfInput(RoadOptions& options);

/// The part of the names of results that stands for a size: "_512x512".
QString nameOfSize(const QSize& size);

/// Puts those quantities into the data set that are given by the headers of the frames and not by options.
/// The log names the source of each, and mentions doubts. The axis of a header is only mentioned, not used,
/// since its sense is uncertain.
void takeFacts(RoadState& state);

/// Writes a project NAME.ed3d with the results of a series that has none, from the headers and the options,
/// and with the axis once it is known. An existing project of that name that was not written by this program
/// is kept, with a line of the log.
/// @return false, with the reason in the report, if it cannot be written
bool writeMadeProject(RoadState& state);

}  // namespace tessera
