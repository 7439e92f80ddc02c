// Beam tilt breaks: the frames of a data set at which a series of beam tilts starts.
#pragma once

#include <QList>

namespace tessera {

/// Finds the first frame of each series of beam tilts.
///
/// Fewer than 3 frames make no series, and all flags are 0. Otherwise the list starts with 1, 0, and flag i
/// is 1 when the absolute step to frame i is more than 1.5 times the absolute step before it.
///
/// @param listBeamTilt  beam tilt of each frame, degrees
/// @return one flag per frame, 1 at the first frame of a series, else 0
QList<int> beamTiltBreaks(const QList<double>& listBeamTilt);

}  // namespace tessera
