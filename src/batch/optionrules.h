// Rules that concern more than one option of the command line.
#pragma once

#include "road/roadoptions.h"

namespace tessera {

/// Checks options that exclude or require one another.
/// @return empty, or the first contradiction
QString contradiction(const RoadOptions& o);

/// Looks for quantities that neither the options nor the headers of the images, which have been read, give.
/// @return empty, or a sentence that names the missing quantities and the options for them
QString whatImagesLack(const RoadOptions& o);

}  // namespace tessera
