// SpotSize: how wide the spots of a series are, and how close they lie, from the frames themselves.
#pragma once

#include "dataset/dataset.h"
#include "imaging/imgobj.h"
#include "records/runreport.h"

#include <QPointF>

#include <optional>
#include <vector>

namespace tessera {

/// What was measured over some frames of a series.
struct SpotSize {
    double dfSigma = 0;    ///< median over the spots of the sigma of a Gaussian, pixels
    double dfClosest = 0;  ///< what nine in ten spots keep from the nearest other one, pixels; 0: not known
    int nSpots = 0;        ///< spots that the width is from
    int nFrames = 0;       ///< frames that they lie on
};

/// The spots of one frame.
struct FrameSpots {
    std::vector<double> vecSigma;  ///< of the strongest that could be measured, pixels
    std::vector<QPointF> vecSpot;  ///< maxima far above the noise, the strongest first: column, row, pixels
};

/// Finds and measures the strongest spots of a frame.
///
/// The width is that of weighted second moments whose Gaussian weight is made as wide as the spot step by
/// step. A weight of sigma w on a spot of sigma s leaves the variance s²w² / (s² + w²), which is what the
/// window is corrected by. The background is the median of a ring. Left out: flat tops (saturation), single
/// pixels, streaks, what drifts away from its maximum. Where the frame has next to no such spots, it is
/// looked at again with 2 × 2 and 4 × 4 pixels summed, in which wide and weak spots stand out.
/// Sources: Bernstein & Jarvis (2002), Astron. J. 123, 583; Hirata & Seljak (2003), MNRAS 343, 459.
/// @param imgFrame  any size; pixels without a usable number belong to no spot
FrameSpots spotsOfFrame(const CImgObj<float>& imgFrame);

/// The size out of the spots of some frames.
/// @return none with fewer than 10 spots, and where their widths are all over the place
std::optional<SpotSize> spotSizeOf(const std::vector<FrameSpots>& vecFrame);

/// Looks at some frames of the series.
/// @param nJobs  frames looked at side by side; the size is the same for each
/// @return false when the report asked to stop or memory is short; else true, with size empty where there
///         are no usable spots
bool measureSpotSize(const DataSet& dataSet, CRunReport& report, std::optional<SpotSize>& size,
                     int nJobs = 1);

}  // namespace tessera
