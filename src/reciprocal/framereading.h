// Frame reading: what a place on a frame is in reciprocal space.
#pragma once

#include "dataset/dataset.h"

#include <QPointF>

#include <array>
#include <optional>

namespace tessera {

/// A place on a frame, mapped as the peaks are.
struct FrameReading {
    Vec3D point;             ///< Å⁻¹, laboratory frame at tilt 0
    double dfDStar = 0;      ///< Å⁻¹
    double dfAxisAngle = 0;  ///< degrees, 0 to 90, on the frame, as calAngleToRotationAxis() measures it
    std::optional<std::array<double, 3>> indices;  ///< fractional, where a cell is in force
};

/// Reads a place of a frame with all that the mapping undoes.
/// @param ptRaw  raw pixels, whole numbers are centres of pixels
/// @return none where shifts or tilts of the frame are missing, or where the numbers are not finite
std::optional<FrameReading> readFramePlace(const DataSet& dataSet, bool bApplyStretching, int nFrame,
                                           const QPointF& ptRaw);

/// How far two places of one frame are apart.
struct FrameDistance {
    double dfPixels = 0;      ///< as the frame has them
    double dfReciprocal = 0;  ///< Å⁻¹, between the points that they are mapped to
};

/// @return none where one of the places cannot be read
std::optional<FrameDistance> distanceOnFrame(const DataSet& dataSet, bool bApplyStretching, int nFrame,
                                             const QPointF& ptFrom, const QPointF& ptTo);

}  // namespace tessera
