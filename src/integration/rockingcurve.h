// RockingCurve: which part of a passage each frame records.
#pragma once

#include "geometry/rotationmode.h"

namespace tessera {

/// A Gaussian in the excitation error, whose width is that of the crystal and, in proportion to d*, of its
/// mosaic spread; smeared by what turns while a frame is exposed.
struct RockingCurve {
    RotationMode rotation;
    double dfWidth = 0.005;  ///< Å⁻¹, sigma
    double dfMosaicity = 0;  ///< degrees, sigma

    /// Sigma of the Gaussian at a d*, Å⁻¹.
    double widthAt(double dfDStar) const;

    /// How far from the sphere a reflection still shows, Å⁻¹: so many widths, and under precession the way
    /// that the cone takes it.
    double reachAt(double dfDStar, double dfWidths) const;

    /// The part of the whole that a frame records; over all frames of a passage they add up to 1, by
    /// themselves where the crystal turns steadily, and where it stands still as far as the steps are fine.
    ///
    /// @param dfFirst, dfLast  excitation error where the frame begins and ends, Å⁻¹
    /// @param dfMiddle         at its middle: where it stands still
    double part(double dfFirst, double dfMiddle, double dfLast, double dfDStar) const;

private:
    /// The density of the curve at an excitation error, per Å⁻¹.
    double density(double dfExcitation, double dfDStar) const;
};

}  // namespace tessera
