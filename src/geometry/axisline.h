// The rotation axis as a line across the frame.
#pragma once

#include <QLineF>
#include <QPointF>
#include <QSize>

#include <optional>

namespace tessera {

/// Finds the part of the rotation axis that lies on the frame.
///
/// The axis is the line through the direct beam with the direction (cos φ, −sin φ) in image coordinates
/// (x to the right, y down). It is intersected with the lines along the four edges of the frame. The
/// intersections are rounded to whole pixels, and those on the frame, its edges included, are the ends. An
/// axis along x or y keeps the unrounded coordinate of the beam, and spans the frame even if the beam lies
/// outside it. An axis that touches the frame only at a corner gives a line of length 0.
///
/// @param ptCentre        direct beam on the frame, raw pixels
/// @param dfRotationAxis  φ, degrees
/// @param sizeFrame       pixels
/// @return nothing when the axis misses the frame, when the frame is empty, or when a number is not finite
[[nodiscard]] std::optional<QLineF> axisLine(const QPointF& ptCentre, double dfRotationAxis,
                                             const QSize& sizeFrame);

}  // namespace tessera
