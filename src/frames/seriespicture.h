// makeSeriesPicture: combines all frames of a series to one image to look at.
#pragma once

#include "dataset/dataset.h"
#include "imaging/imgobj.h"
#include "records/runreport.h"
#include "records/runresult.h"

namespace tessera {

/// How the frames are combined.
enum class SeriesPictureKind {
    Maximum,  ///< greatest value of each pixel: shows all spots, including weak ones
    Sum,      ///< sum over all frames: shows rings, streaks and diffuse scattering
    Mean,     ///< the sum divided by the number of frames
};

/// The combined image, and which frames it is made of.
struct SeriesPicture {
    CImgObj<float> image;  ///< of the size of the first frame; NaN where no frame has a measurement
    SeriesPictureKind kind = SeriesPictureKind::Maximum;
    int nFrames = 0;              ///< number of frames in it
    int nLeftOut = 0;             ///< frames that could not be read or have another size
    bool bDriftTakenOut = false;  ///< each frame was moved back by its shift in whole pixels
};

/// Combines all frames to one image. If every frame has a shift, it is moved back by that shift, truncated
/// to whole pixels. Pixels that come from outside the frame count as no measurement.
///
/// Unusable pixels are left out: where only some frames have measured a pixel, its sum is scaled to the
/// number of all frames. Sums are in double precision and in the order of the frames. A frame that cannot
/// be read, or has another size than the first readable one, gets a red line and is left out.
/// @param nJobs  frames that are read side by side; the result does not depend on it
/// @return the picture; otherwise: Stopped by the report, Refused without frames, Failed where no frame can
///         be read or memory is short
RunResult<SeriesPicture> makeSeriesPicture(const DataSet& dataSet, SeriesPictureKind kind, CRunReport& report,
                                           int nJobs = 1);

}  // namespace tessera
