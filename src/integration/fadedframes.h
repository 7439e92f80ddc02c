// Faded frames: those that show next to nothing of the crystal.
#pragma once

#include <vector>

namespace tessera {

/// Whether a frame's scale is above five times the median one: the crystal has left the beam or is spoiled,
/// and the scale would make noise as large as intensities.
///
/// @param listScale  what intensities are multiplied by, one for each frame
/// @param listUsed   whether the frame holds reflections; the others have no part in the median
std::vector<char> fadedFrames(const std::vector<double>& listScale, const std::vector<char>& listUsed);

}  // namespace tessera
