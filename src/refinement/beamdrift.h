// Drift left over: what the direct beam of each frame is off by, beside what all frames have in common.
#pragma once

#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

/// What has to be added to the direct beam of each frame, in pixels of the frame: the centre of the model,
/// which all frames have in common, and the drift that is left over.
/// @param nFrames  how many frames the series has; those beyond the drift of the model get the centre alone
std::vector<FramePlace> beamOffsets(const GeometryModel& model, int nFrames);

/// Root mean square length of the drift over its frames, pixels; 0 where there is none.
double driftRms(const GeometryModel& model);

}  // namespace tessera
