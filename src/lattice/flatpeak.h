// FlatPeak: a peak in the plane of its frame, and its point of reciprocal space for any rotation axis.
#pragma once

#include "lattice/latticebasis.h"

#include <vector>

namespace tessera {

/// A peak in the plane of its frame.
struct FlatPeak {
    double dfX = 0;     ///< column relative to the direct beam, pixels, after undoing the stretching
    double dfY = 0;     ///< row, likewise; rows run down
    double dfTilt = 0;  ///< tilt of the frame with its relaxation, degrees
};

/// What is known of the geometry when the axis is not.
struct FlatGeometry {
    double dfPixelSize = 0;   ///< Å⁻¹ per pixel
    double dfWavelength = 0;  ///< Å
};

/// The point of a peak on the Ewald sphere, Å⁻¹, laboratory frame. It is computed as by rotationZ() and
/// ewaldPoint(), but in double precision.
/// @param dfAzimuth  of the rotation axis, degrees counter-clockwise on the screen from 3 o'clock
Eigen::Vector3d onSphere(const FlatPeak& peak, const FlatGeometry& geometry, double dfAzimuth);

/// Turns a vector of the laboratory frame to the frame of the crystal at tilt 0, as rotationX() does.
Eigen::Vector3d turnedByTilt(const Eigen::Vector3d& v, double dfTilt);

/// The points of all peaks in the frame of the crystal at tilt 0.
LatticePoints pointsForAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                            double dfAzimuth);

}  // namespace tessera
