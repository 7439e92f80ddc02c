// The choice of a series before it is opened: from the options, or from beside it.
#pragma once

#include "road/roadoptions.h"

#include <QString>

namespace tessera {

/// Takes the choice that nobody gave from where it was kept: of a start behind the first stage from beside
/// the results, else from beside the project. Looks whether the series, whose frames are known by now, has
/// what was chosen.
/// @return empty, or what is wrong, as "--frames 5-60: the series has frames 1 to 40, and no 5-60"
QString takeChoiceOfInput(RoadOptions& options);

}  // namespace tessera
