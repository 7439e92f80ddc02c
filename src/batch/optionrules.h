// Rules that concern more than one option of the command line.
#pragma once

#include "road/roadoptions.h"

namespace tessera {

/// The first thing that does not go together.
/// @return empty, or what is wrong
QString contradiction(const RoadOptions& o);

}  // namespace tessera
