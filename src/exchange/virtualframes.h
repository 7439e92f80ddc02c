// VirtualFrame: consecutive frames combined to one, as dynamical refinement needs them.
#pragma once

#include "integration/integrationresult.h"

#include <vector>

namespace tessera {

/// How frames are combined.
struct VirtualFrameOptions {
    int nMerged = 0;  ///< frames in one; 0: chosen from the lengths of the passages
    int nStep = 0;    ///< frames from one to the next; 0: half of nMerged
};

/// A virtual frame.
struct VirtualFrame {
    int nFirst = 0;                    ///< first frame, from 0
    int nLast = 0;                     ///< last frame
    std::vector<int> listObservation;  ///< numbers of the observations that are wholly in it
};

/// The numbers to be used: the given ones, or those chosen so that a passage of the length that nine of ten
/// do not exceed is wholly in at least one virtual frame. That is twice this length, in steps of half of
/// that, but not more than the series has.
VirtualFrameOptions chosenVirtualFrames(const IntegratedSeries& integrated, int nFrames,
                                        const VirtualFrameOptions& asked);

/// All virtual frames of a series, each with its measured observations without excluding flags whose summed
/// frames all belong to it. An observation can be in several of them.
std::vector<VirtualFrame> virtualFrames(const IntegratedSeries& integrated, int nFrames,
                                        const VirtualFrameOptions& options);

}  // namespace tessera
