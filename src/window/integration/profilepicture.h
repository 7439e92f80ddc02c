// Profile picture: the pixels around a reflection on its frames, side by side, with the outline of the disc
// in which its intensity is summed.
#pragma once

#include "integration/seriesintegration.h"

#include <QImage>

namespace tessera {

/// The windows of a profile, frame after frame, from left to right and then downwards.
///
/// All windows have one grey scale, from the median of the pixels on their borders (black) to the brightest
/// pixel (white). The outline of the disc and the number of the frame, from 1, are green on the frames from
/// which the intensity was summed, and grey on the others.
/// @param observation  the passage through the Ewald sphere that the profile shows
/// @param nZoom     pixels of the picture for one of the frame, at least 1
/// @param nColumns  windows in a row, at least 1
/// @return null where there are no windows
QImage profilePicture(const ObservationProfile& profile, const Observation& observation, int nZoom,
                      int nColumns);

}  // namespace tessera
