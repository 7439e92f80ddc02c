// RotationMode: how the crystal or the beam moves while a frame is exposed.
#pragma once

#include <QString>

#include <optional>

namespace tessera {

/// The kinds of movement during an exposure.
enum class RotationKind {
    Continuous,  ///< the crystal turns from half a step before the tilt of the frame to half a step after it
    Stepped,     ///< the crystal rests at the tilt of the frame
    Precession,  ///< the crystal rests, and the beam moves along a cone
};

/// The movement during an exposure.
struct RotationMode {
    RotationKind kind = RotationKind::Continuous;
    double dfPrecessionAngle = 0;  ///< half opening angle of the cone, degrees; used by Precession only

    /// Whether kind and angle are equal.
    bool operator==(const RotationMode& other) const
    {
        return kind == other.kind && dfPrecessionAngle == other.dfPrecessionAngle;
    }
};

/// Reads "continuous", "stepped" or, with the half opening angle in degrees, "precession,0.8".
/// @return nothing for any other text
std::optional<RotationMode> rotationModeOf(const QString& strText);

/// The text that rotationModeOf() reads.
QString rotationModeText(const RotationMode& rotation);

}  // namespace tessera
