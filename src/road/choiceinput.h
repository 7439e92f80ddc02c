// The choice of frames, from the options or from a file, before a series is opened.
#pragma once

#include "road/roadoptions.h"

#include <QString>

namespace tessera {

/// If the options contain no choice, reads the one that an earlier run saved: with the results if the run
/// starts behind the first stage, else beside the project. Then checks the choice against the frames of the
/// series, which are known by now.
/// @return empty, or what is wrong, such as "--frames 5-60: the series has frames 1 to 40, and no 5-60"
QString takeChoiceOfInput(RoadOptions& options);

}  // namespace tessera
