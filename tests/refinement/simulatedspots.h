// Indexed peaks of a made-up crystal, placed by a formula of their own in complex numbers.
#pragma once

#include "refinement/geometryspot.h"

#include <Eigen/Dense>

#include <complex>
#include <random>
#include <vector>

namespace tessera {

/// What the series is like; azimuths in degrees, amplitudes as fractions.
struct SeriesTruth {
    Eigen::Matrix3d matDirect = Eigen::Matrix3d::Identity();  ///< rows a, b, c, Å
    double dfAxis = -40;
    double dfOutOfPlane = 0;
    double dfTiltScale = 1;
    double dfStretching = 0, dfStretchingAzimuth = 0;
    double dfEllipse = 0, dfEllipseAzimuth = 0;
    double dfRadial = 0, dfSpiral = 0;               ///< at 256 pixels
    double dfParabolic = 0, dfParabolicAzimuth = 0;  ///< at 256 pixels
    double dfCentreX = 0, dfCentreY = 0;
    double dfWavelength = 0.0251, dfPixelSize = 0.004;
    double dfFirstTilt = -30, dfStep = 1;
    int nFrames = 61;
    double dfWidth = 0.006;             ///< Å⁻¹, of a reflection along the beam
    double dfReach = 0.9;               ///< Å⁻¹
    double dfNoise = 0.3;               ///< pixels, before the rounding to whole ones
    double dfShare = 1;                 ///< of the reflections that are seen
    double dfFineNoise = 0;             ///< pixels, of fine places; 0: there are none
    std::vector<FramePlace> listDrift;  ///< pixels, of each frame's beam; empty: none
};

/// Rows a, b, c of a cell, turned at random.
inline Eigen::Matrix3d turnedCell(double a, double b, double c, double dfAl, double dfBe, double dfGa,
                                  std::mt19937& random)
{
    const double r = std::acos(-1) / 180;
    const double y = (std::cos(dfAl * r) - std::cos(dfBe * r) * std::cos(dfGa * r)) / std::sin(dfGa * r);
    Eigen::Matrix3d mat;
    mat << a, 0, 0, b * std::cos(dfGa * r), b * std::sin(dfGa * r), 0, c * std::cos(dfBe * r), c * y,
        c * std::sqrt(1 - std::cos(dfBe * r) * std::cos(dfBe * r) - y * y);
    std::normal_distribution<double> normal;
    Eigen::Quaterniond turn(normal(random), normal(random), normal(random), normal(random));
    return mat * turn.normalized().toRotationMatrix().transpose();
}

/// Where the projector lenses move a place on the screen (y upwards).
inline std::complex<double> projected(const SeriesTruth& truth, std::complex<double> z)
{
    const std::complex<double> i(0, 1);
    const std::complex<double> parabolic = std::polar(truth.dfParabolic,
                                                      truth.dfParabolicAzimuth * std::acos(-1) / 180);
    return z * (1. - std::real(z * std::conj(parabolic)) / 256. -
                std::norm(z) / (256. * 256.) * (truth.dfRadial - i * truth.dfSpiral));
}

/// What the place before the projector lenses is freed to: of the ellipse, and of the stretching, which is
/// taken at the place behind them.
inline std::complex<double> freed(const SeriesTruth& truth, std::complex<double> z)
{
    const double r = std::acos(-1) / 180;
    const std::complex<double> i(0, 1);
    const std::complex<double> behind = projected(truth, z);
    return z +
           behind * truth.dfStretching * std::cos(2 * (std::arg(behind) - truth.dfStretchingAzimuth * r)) +
           truth.dfEllipse * std::exp(2. * i * truth.dfEllipseAzimuth * r) * std::conj(z);
}

/// Where a point of the laboratory at a tilt is measured, relative to the direct beam that is believed; y
/// down.
inline FramePlace placeOf(const SeriesTruth& truth, const Eigen::Vector3d& point)
{
    const double dfK = 1 / truth.dfWavelength;
    const double dfFlat = dfK / std::sqrt(dfK * dfK - point.x() * point.x() - point.y() * point.y());
    const std::complex<double> target = std::complex<double>(point.x(), -point.y()) * dfFlat /
                                        truth.dfPixelSize *
                                        std::polar(1.0, truth.dfAxis * std::acos(-1) / 180);
    std::complex<double> z = target;
    for (int n = 0; n < 200; ++n) {
        z += target - freed(truth, z);
    }
    z = projected(truth, z);
    return {z.real() + truth.dfCentreX, -z.imag() + truth.dfCentreY};
}

inline Eigen::Matrix3d turnOfFrame(const SeriesTruth& truth, double dfTilt)
{
    const double r = std::acos(-1) / 180;
    const double dfMiddle = truth.dfFirstTilt + truth.dfStep * (truth.nFrames - 1) / 2;
    const Eigen::Vector3d axis(std::cos(truth.dfOutOfPlane * r), 0, std::sin(truth.dfOutOfPlane * r));
    return Eigen::AngleAxisd(-r * (dfMiddle + truth.dfTiltScale * (dfTilt - dfMiddle)), axis)
        .toRotationMatrix();
}

/// The peaks at whole pixels. All of a chain share their noise, as the frames of a reflection do.
inline std::vector<GeometrySpot> simulatedSpots(const SeriesTruth& truth, std::mt19937& random)
{
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    std::vector<GeometrySpot> listSpot;
    const Eigen::Matrix3d matReciprocal = truth.matDirect.inverse();  // columns a*, b*, c*
    const double dfK = 1 / truth.dfWavelength;
    std::array<int, 3> anMost;
    for (int n = 0; n < 3; ++n) {
        anMost[n] = int(truth.dfReach * truth.matDirect.row(n).norm());
    }
    for (int h = -anMost[0]; h <= anMost[0]; ++h) {
        for (int k = -anMost[1]; k <= anMost[1]; ++k) {
            for (int l = -anMost[2]; l <= anMost[2]; ++l) {
                const Eigen::Vector3d g = matReciprocal * Eigen::Vector3d(h, k, l);
                if (g.norm() > truth.dfReach || g.norm() < 0.05 || uniform(random) > truth.dfShare) {
                    continue;
                }
                const double dfNoiseX = truth.dfNoise * normal(random),
                             dfNoiseY = truth.dfNoise * normal(random);
                for (int nFrame = 0; nFrame < truth.nFrames; ++nFrame) {
                    const double dfTilt = truth.dfFirstTilt + truth.dfStep * nFrame;
                    const Eigen::Vector3d p = turnOfFrame(truth, dfTilt) * g;
                    const double dfOff = p.z() - (dfK - std::sqrt(dfK * dfK - p.x() * p.x() - p.y() * p.y()));
                    const double dfStrength = std::exp(-dfOff * dfOff / (2 * truth.dfWidth * truth.dfWidth));
                    if (dfStrength < 0.3) {
                        continue;
                    }
                    GeometrySpot spot;
                    spot.nFrame = nFrame;
                    spot.dfTilt = dfTilt;
                    FramePlace place = placeOf(truth, p);
                    if (!truth.listDrift.empty()) {
                        place.dfX += truth.listDrift[nFrame].dfX;
                        place.dfY += truth.listDrift[nFrame].dfY;
                    }
                    spot.place = {std::round(place.dfX + dfNoiseX), std::round(place.dfY + dfNoiseY)};
                    if (truth.dfFineNoise > 0) {
                        spot.finePlace = {place.dfX + truth.dfFineNoise * normal(random),
                                          place.dfY + truth.dfFineNoise * normal(random)};
                    }
                    spot.anIndex = {h, k, l};
                    spot.dfWeight = dfStrength;
                    listSpot.push_back(spot);
                }
            }
        }
    }
    return listSpot;
}

/// What a user would begin with: the axis a little off, no distortion, a cell that is off by `dfOff`.
inline DiffractionGeometry startOf(const SeriesTruth& truth, double dfOff, std::mt19937& random)
{
    std::normal_distribution<double> normal;
    DiffractionGeometry start;
    const Eigen::Matrix3d matReciprocal = truth.matDirect.inverse();
    for (int n = 0; n < 3; ++n) {
        for (int m = 0; m < 3; ++m) {
            start.aBasis[n][m] = matReciprocal(m, n) + dfOff * matReciprocal.col(n).norm() * normal(random);
        }
    }
    start.plane.axis = truth.dfAxis + 100 * dfOff;
    start.dfWavelength = truth.dfWavelength;
    start.dfPixelSize = truth.dfPixelSize;
    start.dfMiddleTilt = truth.dfFirstTilt + truth.dfStep * (truth.nFrames - 1) / 2;
    return start;
}

}  // namespace tessera
