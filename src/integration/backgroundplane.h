// BackgroundPlane: the background under a spot, fitted to the pixels around it.
#pragma once

#include <Eigen/Core>

#include <vector>

namespace tessera {

/// A pixel of the background.
struct BackgroundPixel {
    double dfX = 0;  ///< pixels from the centre of the spot
    double dfY = 0;  ///< pixels from the centre of the spot
    double dfCounts = 0;
};

/// counts = level + slopeX·x + slopeY·y.
struct BackgroundPlane {
    Eigen::Vector3d vecCoefficient = Eigen::Vector3d::Zero();  ///< level, slopeX, slopeY
    Eigen::Matrix3d matCovariance = Eigen::Matrix3d::Zero();   ///< of the coefficients, per pixel variance
    double dfVariance = 0;                                     ///< of the pixels about the plane, counts²
    int nPixels = 0;                                           ///< pixels in the fit; 0: no background

    /// The background at a place relative to the centre of the spot, counts.
    double at(double dfX, double dfY) const
    {
        return vecCoefficient[0] + vecCoefficient[1] * dfX + vecCoefficient[2] * dfY;
    }
};

/// Fits a plane robustly: starts from the median, then repeatedly fits and rejects pixels that deviate by
/// more than four standard deviations and more than two electrons. Fewer than 20 pixels give no background; a
/// plane needs at least three pixels that are not on one line.
/// @param dfGain  counts per electron; 0 if it is not known yet
BackgroundPlane fitBackground(const std::vector<BackgroundPixel>& listPixel, double dfGain);

}  // namespace tessera
