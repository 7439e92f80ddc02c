// RotationMode: how the crystal turns while a frame is exposed.
#pragma once

namespace tessera {

enum class RotationKind {
    Continuous,  ///< turns steadily from half a step before the tilt of the frame to half a step after
    Stepped,     ///< stands still at the tilt of the frame
    Precession,  ///< stands still while the beam goes round a cone
};

struct RotationMode {
    RotationKind kind = RotationKind::Continuous;
    double dfPrecessionAngle = 0;  ///< degrees, half opening of the cone; of Precession alone
};

}  // namespace tessera
