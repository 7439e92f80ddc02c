// PointPair: what two points of reciprocal space are to one another.
#pragma once

#include "cloud/cellframe.h"

#include <QString>

#include <optional>

namespace tessera {

/// The difference of two points.
struct PointPair {
    double dfDelta = 0;                        ///< its length, Å⁻¹
    std::optional<double> spacing;             ///< 1/dfDelta, Å; none for points at one place
    std::optional<DoubleVector> deltaIndices;  ///< Δh, Δk, Δl; none without a cell
    std::optional<double>
        angle;  ///< between the points as seen from the origin, degrees; none with one there
};

/// @param from, to  Å⁻¹, laboratory frame
PointPair measurePair(const Vec3D& from, const Vec3D& to, const std::optional<CCellFrame>& cell);

/// "Δ=0.1234 Å⁻¹, d=8.104 Å, Δhkl=(1.00, 0.02, -2.01), 12.3° at the origin", in the default locale.
QString pairText(const PointPair& pair);

}  // namespace tessera
