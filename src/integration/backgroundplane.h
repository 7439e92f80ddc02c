// BackgroundPlane: the level under a spot, from the pixels around it.
#pragma once

#include <Eigen/Core>

#include <vector>

namespace tessera {

struct BackgroundPixel {
    double dfX = 0;  ///< pixels from the centre of the spot
    double dfY = 0;
    double dfCounts = 0;
};

/// counts = level + slopeX·x + slopeY·y.
struct BackgroundPlane {
    Eigen::Vector3d vecCoefficient = Eigen::Vector3d::Zero();
    Eigen::Matrix3d matCovariance = Eigen::Matrix3d::Zero();  ///< for pixels of variance 1
    double dfVariance = 0;                                    ///< of the pixels about the plane, counts²
    int nPixels = 0;                                          ///< kept; 0: no background

    double at(double dfX, double dfY) const
    {
        return vecCoefficient[0] + vecCoefficient[1] * dfX + vecCoefficient[2] * dfY;
    }
};

/// Starts at the median, then fits and drops what lies more than four deviations and two electrons off, in
/// rounds. Fewer than 20 pixels give no background; a plane takes at least three that lie in no line.
/// @param dfGain  counts per electron; 0 where it is not known yet
BackgroundPlane fitBackground(const std::vector<BackgroundPixel>& listPixel, double dfGain);

}  // namespace tessera
