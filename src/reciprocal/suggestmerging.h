// suggestMerging: the distances of the chains that follow from how close the spots lie.
#pragma once

#include "frames/suggestpeaksearch.h"
#include "records/peak3d.h"

#include <QList>

namespace tessera {

/// The closest distance of the peaks of some frames (closestDistance()), pixels; 0 where too few are there.
/// @param listPeakFrame  one list per frame
double closestDistanceOfPeaks(const QList<QList<Peak3D>>& listPeakFrame);

/// The distances within a chain: those of the pages, less where they would reach half the way to the next
/// spot, beyond which a peak belongs to another reflection.
/// @param dfClosest  by closestDistanceOfPeaks(); 0: no suggestion
Suggestion suggestMerging(double dfClosest);

}  // namespace tessera
