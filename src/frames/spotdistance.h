// closestDistance: how close the spots of a series lie to one another on the frames.
#pragma once

#include <QPointF>

#include <vector>

namespace tessera {

/// What nine in ten spots keep from the nearest other spot of their frame, pixels. One in ten may lie closer:
/// spots of two layers of the lattice meet by chance.
///
/// Spots that stand still over half the frames or more, such as the direct beam and pixels that always shine,
/// do not count, nor does a spot that lies within a distance of an earlier one of its frame.
/// @param vecFrame    spots of some frames, those that matter first: column, row
/// @param dfOneSpot   maxima closer than this, and than 3 pixels, are of one spot
/// @return 0 with fewer than 30 spots
double closestDistance(const std::vector<std::vector<QPointF>>& vecFrame, double dfOneSpot);

}  // namespace tessera
