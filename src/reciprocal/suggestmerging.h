// suggestMerging: the distances of the chains that follow from how close the spots lie.
#pragma once

#include "frames/suggestpeaksearch.h"
#include "records/peak3d.h"

#include <QList>

namespace tessera {

/// The closest distance of the peaks of some frames (closestDistance()), pixels; 0 where too few are there.
/// @param listPeakFrame  one list per frame
double closestDistanceOfPeaks(const QList<QList<Peak3D>>& listPeakFrame);

/// The distances within a chain: those of the pages, or less where spots lie close.
///
/// On the frames a peak beyond half the way to the next spot belongs to another reflection. Of two
/// reflections that lie within half the way on the frames, and so may join a chain, the planes of the frames
/// lie 0.87 of the closest distance apart or more: there the chain has to be closed. An earlier end would
/// part a reflection that is missing on a frame or two.
/// @param dfClosest  by closestDistanceOfPeaks(); 0: no suggestion
Suggestion suggestMerging(double dfClosest);

}  // namespace tessera
