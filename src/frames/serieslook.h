// lookAtSeries: size of the spots and defects of a series, from one reading of the same frames.
#pragma once

#include "frames/framedefects.h"
#include "frames/spotsize.h"

#include <optional>

namespace tessera {

/// What is looked for.
struct SeriesLookWanted {
    bool bDefects = true;
    bool bSpotSize = true;
};

/// What was seen; what was not looked for stays empty.
struct SeriesLook {
    FrameDefects defects;
    std::optional<SpotSize> size;  ///< none as well where there are no usable spots
};

/// How many frames a look at a series takes: one in seven, but 6 at least and 13 at most.
///
/// A seventh costs less than a tenth of hunting them all. Five frames tell what stands still from what moves,
/// for shadows and hot pixels; a sixth is there in case that one cannot be read. The width takes 10 spots and
/// their distances 30, two and five a frame then; with 13 frames there are far more than enough.
int framesToLookAt(int nFrames);

/// Looks at framesToLookAt() frames spread over the series, of which seven at most say something of defects.
/// @param nJobs  frames looked at side by side; what is seen is the same for each
/// @return false when the report asked to stop or memory is short; look is untouched then
bool lookAtSeries(const DataSet& dataSet, SeriesLookWanted wanted, CRunReport& report, SeriesLook& look,
                  int nJobs = 1);

}  // namespace tessera
