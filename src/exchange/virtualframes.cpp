#include "exchange/virtualframes.h"

#include "integration/equivalents.h"

#include <algorithm>

namespace tessera {

namespace {

/// The number of frames that nine of ten passages do not exceed.
int usualLength(const std::vector<Observation>& list)
{
    std::vector<int> listLength;
    for (const Observation& observation : list) {
        if (isUsable(observation)) {
            listLength.push_back(observation.nLastFrame - observation.nFirstFrame + 1);
        }
    }
    if (listLength.empty()) {
        return 1;
    }
    const auto most = listLength.begin() + int(listLength.size() * 9 / 10);
    std::nth_element(listLength.begin(), most, listLength.end());
    return std::max(1, *most);
}

}  // namespace

VirtualFrameOptions chosenVirtualFrames(const IntegratedSeries& integrated, int nFrames,
                                        const VirtualFrameOptions& asked)
{
    VirtualFrameOptions chosen = asked;
    if (chosen.nMerged <= 0) {
        chosen.nMerged = 2 * usualLength(integrated.listObservation);
    }
    chosen.nMerged = std::clamp(chosen.nMerged, 1, std::max(1, nFrames));
    if (chosen.nStep <= 0) {
        chosen.nStep = std::max(1, chosen.nMerged / 2);
    }
    return chosen;
}

std::vector<VirtualFrame> virtualFrames(const IntegratedSeries& integrated, int nFrames,
                                        const VirtualFrameOptions& options)
{
    std::vector<VirtualFrame> list;
    for (int nFirst = 0; nFirst + options.nMerged <= nFrames; nFirst += options.nStep) {
        list.push_back({nFirst, nFirst + options.nMerged - 1, {}});
    }
    for (size_t n = 0; n < integrated.listObservation.size(); ++n) {
        const Observation& one = integrated.listObservation[n];
        for (VirtualFrame& frame : list) {
            if (isUsable(one) && one.nFirstFrame >= frame.nFirst && one.nLastFrame <= frame.nLast) {
                frame.listObservation.push_back(int(n));
            }
        }
    }
    return list;
}

}  // namespace tessera
