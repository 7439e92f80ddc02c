// RotationMode: how the crystal turns while a frame is exposed.
#pragma once

#include <QString>

#include <optional>

namespace tessera {

enum class RotationKind {
    Continuous,  ///< turns steadily from half a step before the tilt of the frame to half a step after
    Stepped,     ///< stands still at the tilt of the frame
    Precession,  ///< stands still while the beam goes round a cone
};

struct RotationMode {
    RotationKind kind = RotationKind::Continuous;
    double dfPrecessionAngle = 0;  ///< degrees, half opening of the cone; of Precession alone

    bool operator==(const RotationMode& other) const
    {
        return kind == other.kind && dfPrecessionAngle == other.dfPrecessionAngle;
    }
};

/// Reads "continuous", "stepped" or, with the half opening in degrees, "precession,0.8".
/// @return none of any other text
std::optional<RotationMode> rotationModeOf(const QString& strText);

/// The text that rotationModeOf() reads.
QString rotationModeText(const RotationMode& rotation);

}  // namespace tessera
