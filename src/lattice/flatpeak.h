// FlatPeak: a peak on the flat pattern with the tilt of its frame, and its point for any rotation axis.
#pragma once

#include "lattice/latticebasis.h"

#include <vector>

namespace tessera {

struct FlatPeak {
    double dfX = 0;     ///< column relative to the direct beam, pixels, the stretching undone
    double dfY = 0;     ///< row, likewise, running down
    double dfTilt = 0;  ///< degrees, of the frame, with the relaxation
};

struct FlatGeometry {
    double dfPixelSize = 0;   ///< Å⁻¹ per pixel
    double dfWavelength = 0;  ///< Å
};

/// The peak on the Ewald sphere, Å⁻¹, laboratory frame: as rotationZ() and ewaldPoint(), in double precision.
/// @param dfAzimuth  of the rotation axis, degrees counter-clockwise on the screen from 3 o'clock
Eigen::Vector3d onSphere(const FlatPeak& peak, const FlatGeometry& geometry, double dfAzimuth);

/// A vector of the laboratory in the frame of the crystal at tilt 0, as rotationX() turns it.
Eigen::Vector3d turnedByTilt(const Eigen::Vector3d& v, double dfTilt);

/// The points of all peaks in the frame of the crystal.
LatticePoints pointsForAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                            double dfAzimuth);

}  // namespace tessera
