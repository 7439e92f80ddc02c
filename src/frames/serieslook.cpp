#include "frames/serieslook.h"

#include "frames/seriessample.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tessera {

namespace {

const int g_nLeastFrames = 6;
const int g_nMostFrames = 13;
const int g_nOneFrameIn = 7;
const int g_nFramesForDefects = 7;

struct Seen {
    std::optional<FrameSigns> signs;
    std::optional<FrameSpots> spots;
};

}  // namespace

int framesToLookAt(int nFrames)
{
    return std::min(nFrames, std::clamp(nFrames / g_nOneFrameIn, g_nLeastFrames, g_nMostFrames));
}

std::optional<SeriesLook> lookAtSeries(const DataSet& dataSet, SeriesLookWanted wanted, CRunReport& report,
                                       int nJobs)
{
    const int nFrames = dataSet.m_listFrameFile.size();
    const int nMost = wanted.bSpotSize ? g_nMostFrames : g_nFramesForDefects;
    const std::vector<int> vecFrame = sampledFrames(nFrames, std::min(framesToLookAt(nFrames), nMost));
    const std::vector<int> vecForDefects = sampledFrames(int(vecFrame.size()), g_nFramesForDefects);
    const auto makeLook = [&] {
        return [&](const CImgObj<float>& img, int i) {
            Seen seen;
            if (wanted.bDefects && std::binary_search(vecForDefects.begin(), vecForDefects.end(), i)) {
                seen.signs = signsOfFrame(img);
            }
            if (wanted.bSpotSize) {
                seen.spots = spotsOfFrame(img);
            }
            return seen;
        };
    };
    std::vector<FrameSigns> vecSigns;
    std::vector<FrameSpots> vecSpots;
    const auto take = [&](Seen& seen) {
        if (seen.signs) {
            vecSigns.push_back(std::move(*seen.signs));
        }
        if (seen.spots) {
            vecSpots.push_back(std::move(*seen.spots));
        }
    };
    if (!forEachFrameOf<Seen>(vecFrame, dataSet, nJobs, report, makeLook, take)) {
        return std::nullopt;
    }
    return SeriesLook{wanted.bDefects ? defectsOf(vecSigns) : FrameDefects(),
                      wanted.bSpotSize ? spotSizeOf(vecSpots) : std::nullopt};
}

}  // namespace tessera
