// findShiftJumps: frames whose measured shift stands apart from that of their neighbours.
#pragma once

#include <QList>
#include <QPointF>

namespace tessera {

/// The pattern drifts smoothly, but a frame near a zone axis may match the others best when moved by
/// a row of its lattice. Such a shift is tens of pixels away from those of the frames around it, and
/// it moves all peaks of the frame to wrong indices.
///
/// @param listShift  pixels, one per frame
/// @param dfLimit    pixels: a frame is named when either coordinate is further than this from the
///                   median of the two frames before and the two behind it
/// @return indices from 0, ascending; empty with fewer than 5 frames
QList<int> findShiftJumps(const QList<QPointF>& listShift, double dfLimit);

}  // namespace tessera
