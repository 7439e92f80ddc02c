// VirtualFrame: neighbouring frames put together, as dynamical refinement takes them.
#pragma once

#include "integration/integrationresult.h"

#include <vector>

namespace tessera {

/// How frames are put together.
struct VirtualFrameOptions {
    int nMerged = 0;  ///< frames; 0: chosen from the lengths of the passages
    int nStep = 0;    ///< frames from one to the next; 0: half of nMerged
};

struct VirtualFrame {
    int nFirst = 0;                    ///< frames, from 0
    int nLast = 0;                     ///< included
    std::vector<int> listObservation;  ///< places in the list of those that lie wholly in it
};

/// The numbers that were asked for, or those that fit: a passage as long as nine of ten are is to lie wholly
/// in at least one virtual frame, which takes twice its length in steps of half of that; not more than the
/// series has.
VirtualFrameOptions chosenVirtualFrames(const IntegratedSeries& integrated, int nFrames,
                                        const VirtualFrameOptions& asked);

/// All virtual frames that fit into the series, each with its measured observations without excluding flags
/// whose summed frames all belong to it. An observation can be in several.
std::vector<VirtualFrame> virtualFrames(const IntegratedSeries& integrated, int nFrames,
                                        const VirtualFrameOptions& options);

}  // namespace tessera
