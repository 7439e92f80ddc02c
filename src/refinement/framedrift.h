// Drift: what the direct beam of each frame is off by, from the distances of its peaks.
#pragma once

#include "geometry/diffractiongeometry.h"
#include "records/runreport.h"

#include <vector>

namespace tessera {

/// How far a peak lies from where its reflection is expected, pixels of the frame (y down).
struct FrameDistance {
    int nFrame = 0;  ///< from 0
    int nChain = 0;
    FramePlace off;
};

struct FrameDrift {
    std::vector<FramePlace> listOffset;  ///< pixels, of each frame; empty where none is left over
    int nIntervals = 0;                  ///< of the smooth part; 0 where there is none
    double dfScatter = 0;                ///< pixels, of the frames about the smooth part, along one direction
    int nJumps = 0;                      ///< frames that stand apart from the others
};

/// The drift that the peaks of a series have in common frame by frame.
///
/// A frame's offset is that of the middle of its peaks, robust against false ones. Its smooth part is a
/// natural cubic spline over the frame number; the number of its intervals is the one that fits those frames
/// best which it has not seen (every second one, in turn). What a frame lies beside it is believed as far as
/// it exceeds its error: by τ²/(τ² + σ²) with the scatter τ of the frames, where half of the chains tells
/// that of the other half better for it; and of a frame that stands apart from the others by 1 − λ²/r²,
/// which leaves a wide jump nearly whole, where λ is the length that some frame of one series in twenty
/// exceeds by chance. An offset of its own needs six peaks on the frame: each half of them is three then,
/// whose middle one false peak does not move far.
///
/// The mean over the peaks is 0, as it belongs to the centre.
/// @param nFrames  how many offsets there will be
/// Sources: the scatter by James & Stein (1961), Proc. 4th Berkeley Symp. 1, 361–379; the jumps by Donoho &
/// Johnstone (1994), Biometrika 81, 425–455, and Gao (1998), J. Comput. Graph. Stat. 7, 469–488.
FrameDrift frameDrift(const std::vector<FrameDistance>& listDistance, int nFrames, CRunReport& report);

}  // namespace tessera
