// suggestLimits: the limits of the peaks to merge that follow from the peaks themselves.
#pragma once

#include "dataset/dataset.h"
#include "frames/suggestpeaksearch.h"

namespace tessera {

/// Distance from the direct beam up to which peaks are of the beam itself, pixels; 0 where it makes no more
/// than about one peak a frame.
///
/// A saturated or overflowing beam is a disc, and its rim a ring of peaks. Over all frames they lie in one
/// heap around the beam, with at least 3 pixels free of peaks beyond it.
/// @param dfClosest  of the peaks (closestDistanceOfPeaks()): no reflection lies nearer to the beam
double radiusOfBeamPeaks(const DataSet& dataSet, double dfClosest);

/// The least d* of the peaks to merge, beyond the peaks of the beam itself; nothing where it makes none.
/// @param dataSet  peaks of the frames, shifts and direct beam, pixel size
Suggestion suggestLimits(const DataSet& dataSet, double dfClosest);

}  // namespace tessera
