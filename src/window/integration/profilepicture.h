// Profile picture: the pixels of a reflection on its frames, side by side, with the disc that was summed.
#pragma once

#include "integration/seriesintegration.h"

#include <QImage>

namespace tessera {

/// The windows of a profile, frame after frame, from left to right and then downwards.
///
/// All have one grey scale, from the median of the windows' rims to the brightest pixel. The outline of the
/// disc is green on the frames that were summed, grey on the others.
/// @param nZoom     pixels of the picture for one of the frame, at least 1
/// @param nColumns  windows in a row, at least 1
/// @return null where there are no windows
QImage profilePicture(const ObservationProfile& profile, const Observation& observation, int nZoom,
                      int nColumns);

}  // namespace tessera
