// RockingCurve: the fraction of a reflection that each frame records.
#pragma once

#include "geometry/rotationmode.h"

namespace tessera {

/// A Gaussian in the excitation error, smeared by the rotation during the exposure of a frame. Its width has
/// a constant part and a part due to mosaicity, which is proportional to d*.
struct RockingCurve {
    RotationMode rotation;
    double dfWidth = 0.005;  ///< constant part of the width, sigma in Å⁻¹
    double dfMosaicity = 0;  ///< sigma in degrees

    /// Sigma of the Gaussian at a d*, Å⁻¹.
    double widthAt(double dfDStar) const;

    /// The distance from the Ewald sphere within which a reflection is visible, Å⁻¹: a number of widths plus,
    /// in precession mode, the displacement by the precession cone.
    double reachAt(double dfDStar, double dfWidths) const;

    /// The fraction of the total intensity that a frame records. The fractions of all frames of a passage add
    /// up to 1: exactly in continuous rotation, and approximately in a stepped series with fine steps.
    ///
    /// @param dfFirst, dfLast  excitation error at the start and the end of the frame, Å⁻¹
    /// @param dfMiddle         excitation error at the middle of the frame, where a stepped series stands
    /// still
    double part(double dfFirst, double dfMiddle, double dfLast, double dfDStar) const;

private:
    /// The density of the curve at an excitation error, Å.
    double density(double dfExcitation, double dfDStar) const;
};

}  // namespace tessera
