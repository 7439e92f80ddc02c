// Rules that concern more than one option of the command line.
#pragma once

#include "road/roadoptions.h"

namespace tessera {

/// The first thing that does not go together.
/// @return empty, or what is wrong
QString contradiction(const RoadOptions& o);

/// What images, whose headers have been read, and options do not tell.
/// @return empty, or one sentence that names the options that give it
QString whatImagesLack(const RoadOptions& o);

}  // namespace tessera
