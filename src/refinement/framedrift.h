// Frame drift: the residual displacement of each frame, estimated from the distances of its peaks to their
// expected places.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "records/runreport.h"

#include <vector>

namespace tessera {

/// The distance of a peak from the place where its reflection is expected, pixels of the frame (y down).
struct FrameDistance {
    int nFrame = 0;  ///< from 0
    int nChain = 0;  ///< the run of frames on which the reflection was seen
    FramePlace off;  ///< measured less expected
};

/// The residual drift of a series.
struct FrameDrift {
    std::vector<FramePlace> listOffset;  ///< pixels, one per frame; empty if no drift was found
    int nIntervals = 0;                  ///< spline intervals of the smooth part; 0 without a smooth part
    double dfScatter = 0;                ///< pixels, rms of the frames about the smooth part in one direction
    int nJumps = 0;  ///< number of frames that deviate significantly from their neighbours
};

/// Estimates the drift that the peaks of each frame have in common.
///
/// The offset of a frame is a robust centre of the distances of its peaks. The smooth part of the drift is a
/// natural cubic spline over the frame number; its number of intervals is chosen by cross-validation (every
/// second frame is predicted from the others, in turn). The deviation of a single frame from the smooth part
/// is shrunk according to its error: by the factor τ²/(τ² + σ²) with the scatter τ of all frames, provided
/// that one half of the chains then predicts the other half better; for a frame that deviates significantly,
/// by 1 − λ²/r², which keeps a wide jump nearly whole. λ is the length that some frame exceeds by chance in
/// one series out of twenty. A frame needs six peaks for an offset of its own, so that each half has three
/// and a single false peak does not move its median far.
///
/// The mean of the drift over the peaks is 0, since a common offset belongs to the centre.
/// @param nFrames  number of offsets in the result
/// Sources: the scatter by James & Stein (1961), Proc. 4th Berkeley Symp. 1, 361–379; the jumps by Donoho &
/// Johnstone (1994), Biometrika 81, 425–455, and Gao (1998), J. Comput. Graph. Stat. 7, 469–488.
FrameDrift frameDrift(const std::vector<FrameDistance>& listDistance, int nFrames, CRunReport& report);

}  // namespace tessera
