// findShiftJumps: finds frames whose measured shift differs from that of their neighbours.
#pragma once

#include <QList>
#include <QPointF>

namespace tessera {

/// Finds jumps of the shift. The pattern drifts smoothly, but a frame near a zone axis may correlate best
/// with the others when it is moved by a row of the lattice. Such a shift differs by tens of pixels from
/// those of the frames around it, and all peaks of the frame get wrong indices.
///
/// @param listShift  pixels, one per frame
/// @param dfLimit    pixels; a frame is returned when one of its coordinates differs by more than this from
///                   the median of the two frames before and the two after it
/// @return indices from 0, ascending; empty with fewer than 5 frames
QList<int> findShiftJumps(const QList<QPointF>& listShift, double dfLimit);

}  // namespace tessera
