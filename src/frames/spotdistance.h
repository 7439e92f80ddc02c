// closestDistance: how close to each other the spots of a series are on the frames.
#pragma once

#include <QPointF>

#include <vector>

namespace tessera {

/// The distance to the nearest other spot of the frame that nine in ten spots exceed, pixels. One in ten
/// may be closer, as spots of two layers of the lattice come close by chance.
///
/// Spots that do not move over half of the frames or more, such as the direct beam and hot pixels, are left
/// out. So are spots within dfOneSpot of a former spot of the frame.
/// @param vecFrame   spots of some frames, the most important first: column, row
/// @param dfOneSpot  maxima closer than this, or than 3 pixels, belong to one spot
/// @return 0 with fewer than 30 spots
double closestDistance(const std::vector<std::vector<QPointF>>& vecFrame, double dfOneSpot);

}  // namespace tessera
