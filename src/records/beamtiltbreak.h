// Beam tilt breaks: where a series of beam tilts starts inside a data set.
#pragma once

#include <QList>

namespace tessera {

/// One flag per frame, 1 at the first frame of a beam tilt series, else 0.
///
/// Fewer than 3 frames have no series: all flags are 0. Else the list starts 1, 0, and flag i is 1
/// when the step to frame i is more than 1.5 times the step before it, both by their absolute values.
///
/// @param listBeamTilt  beam tilt of each frame, degrees
QList<int> beamTiltBreaks(const QList<double>& listBeamTilt);

}  // namespace tessera
