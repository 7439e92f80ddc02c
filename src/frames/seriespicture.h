// makeSeriesPicture: all frames of a series in one image, for the eye.
#pragma once

#include "dataset/dataset.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

namespace tessera {

enum class SeriesPictureKind {
    Maximum,  ///< the largest value of a pixel on any frame: all spots, the weak ones too
    Sum,      ///< over all frames: rings, streaks and what is diffuse
    Mean,     ///< the sum by the number of frames
};

/// What an image made of many frames was made of.
struct SeriesPicture {
    CImgObj<float> image;  ///< of the size of the first frame; NaN where no frame has a measurement
    SeriesPictureKind kind = SeriesPictureKind::Maximum;
    int nFrames = 0;              ///< that are in it
    int nLeftOut = 0;             ///< that could not be read or have another size
    bool bDriftTakenOut = false;  ///< each frame lies moved back by its shift in whole pixels
};

/// Makes one image of all frames. Where there is a shift for each of them, a frame is moved back by its own,
/// truncated to whole pixels, and what is moved in from outside it counts as no measurement.
///
/// Pixels that are not usable take no part: of those that some frames have measured, the sum is raised to the
/// number of all. Sums are in double precision and in the order of the frames. A frame that cannot be read,
/// or has another size than the first that can, has a red line and is left out.
/// @param nJobs  frames read side by side; the image is the same for each
/// @return Finished; otherwise picture is untouched: Stopped by the report, Refused without frames, Failed
/// where
///         no frame can be read or memory is short
RunOutcome makeSeriesPicture(const DataSet& dataSet, SeriesPictureKind kind, CRunReport& report,
                             SeriesPicture& picture, int nJobs = 1);

}  // namespace tessera
