// SpotSize: measures how wide the spots of a series are, and how close to each other.
#pragma once

#include "dataset/dataset.h"
#include "imaging/imgobj.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <QPointF>

#include <optional>
#include <vector>

namespace tessera {

/// Widths and distances of spots on some frames of a series.
struct SpotSize {
    double dfSigma = 0;    ///< median of the sigmas of the spots, pixels
    double dfClosest = 0;  ///< closestDistance(), pixels; 0: unknown
    int nSpots = 0;        ///< number of spots that were measured
    int nFrames = 0;       ///< number of frames with such spots
};

/// The spots of one frame.
struct FrameSpots {
    std::vector<double> vecSigma;  ///< sigmas of the strongest measurable spots, pixels
    std::vector<QPointF> vecSpot;  ///< maxima far above the noise, the strongest first: column, row, pixels
};

/// Finds and measures the strongest spots of a frame.
///
/// The width follows from second moments with a Gaussian weight, which is adapted step by step to the width
/// of the spot. A weight of sigma w leaves a spot of sigma s the variance s²w² / (s² + w²), from which s is
/// computed. The background is the median of a ring. Saturated spots, single pixels, streaks, and spots
/// whose centre moves away from the maximum are left out. If the frame has hardly any such spots, it is
/// analysed again with 2 × 2 and 4 × 4 pixels summed, which shows wide and weak spots.
/// Sources: Bernstein & Jarvis (2002), Astron. J. 123, 583; Hirata & Seljak (2003), MNRAS 343, 459.
/// @param imgFrame  any size; unusable pixels belong to no spot
FrameSpots spotsOfFrame(const CImgObj<float>& imgFrame);

/// The size from the spots of some frames.
/// @return nothing with fewer than 10 spots, and where their widths differ too much
std::optional<SpotSize> spotSizeOf(const std::vector<FrameSpots>& vecFrame);

/// What measureSpotSize() found.
struct MeasuredSpotSize {
    RunOutcome outcome;            ///< Stopped when the report asked to stop, Failed when memory is short
    std::optional<SpotSize> size;  ///< nothing if there are no usable spots, too
};

/// Measures the spots of some frames of the series.
/// @param nJobs  frames that are read side by side; the result does not depend on it
MeasuredSpotSize measureSpotSize(const DataSet& dataSet, CRunReport& report, int nJobs = 1);

}  // namespace tessera
