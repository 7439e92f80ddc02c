// The rotation axis as a line across the frame.
#pragma once

#include <QLineF>
#include <QPointF>
#include <QSize>

namespace tessera {

/// The part of the rotation axis that lies on the frame.
///
/// The axis is the line through the direct beam with the direction (cos φ, −sin φ) in image coordinates
/// (x to the right, y down). It is cut with the lines along the frame's four edges; the cuts are rounded
/// to whole pixels, and those on the frame (its edges included) are the ends. An axis along x or y keeps
/// the beam's own coordinate unrounded, and spans the frame even where the beam lies beside it. One that
/// touches the frame at a corner alone gives a line of no length.
///
/// @param ptCentre        direct beam on the frame, raw pixels
/// @param dfRotationAxis  φ, degrees
/// @param sizeFrame       pixels
/// @return false, with line as it was, when the axis passes the frame by, when the frame is empty, or when
///         a number is not finite
[[nodiscard]] bool axisLine(QLineF& line, const QPointF& ptCentre, double dfRotationAxis,
                            const QSize& sizeFrame);

}  // namespace tessera
