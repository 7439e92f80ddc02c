// Residual drift: how far the direct beam of each frame lies from where the shifts and the common centre put
// it.
#pragma once

#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

/// The correction to the direct beam of each frame, in pixels of the frame: the centre of the model, which
/// all frames share, plus the residual drift of the frame.
/// @param nFrames  number of frames of the series; frames for which the model has no drift get the centre
/// alone
std::vector<FramePlace> beamOffsets(const GeometryModel& model, int nFrames);

/// Root mean square length of the residual drift over its frames, pixels; 0 if the model has no drift.
double driftRms(const GeometryModel& model);

}  // namespace tessera
