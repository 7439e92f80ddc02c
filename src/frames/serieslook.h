// lookAtSeries: the size of the spots and the defects of a series, from one reading of some frames.
#pragma once

#include "frames/framedefects.h"
#include "frames/spotsize.h"

#include <optional>

namespace tessera {

/// What is to be found.
struct SeriesLookWanted {
    bool bDefects = true;
    bool bSpotSize = true;
};

/// What was found; members that were not wanted stay empty.
struct SeriesLook {
    FrameDefects defects;
    std::optional<SpotSize> size;  ///< nothing if there are no usable spots, too
};

/// How many frames are read: one in seven, but at least 6 and at most 13.
///
/// A seventh of the frames costs less than a tenth of the peak search. Five frames are needed to tell fixed
/// features from moving ones, for shadows and hot pixels, and the sixth is a reserve in case one cannot be
/// read. The width needs 10 spots and the distances need 30, that is two and five spots per frame; 13
/// frames have far more than enough.
int framesToLookAt(int nFrames);

/// Reads framesToLookAt() frames spread over the series. At most seven of them are used for the defects.
/// @param nJobs  frames that are read side by side; the result does not depend on it
/// @return nothing when the report asked to stop or memory is short
std::optional<SeriesLook> lookAtSeries(const DataSet& dataSet, SeriesLookWanted wanted, CRunReport& report,
                                       int nJobs = 1);

}  // namespace tessera
