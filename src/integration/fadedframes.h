// Faded frames: frames on which the crystal hardly diffracts.
#pragma once

#include <vector>

namespace tessera {

/// Marks frames whose scale is more than five times the median scale: the crystal has left the beam or is
/// damaged, and the scale would amplify noise to the size of intensities.
///
/// @param listScale  factor of the intensities, one per frame
/// @param listUsed   whether the frame has reflections; frames without any do not enter the median
std::vector<char> fadedFrames(const std::vector<double>& listScale, const std::vector<char>& listUsed);

}  // namespace tessera
