// LensDistortion: what the imaging lenses do to a pattern beyond the stretching that a project can tell.
#pragma once

#include <array>

namespace tessera {

/// Distortion around the direct beam, first the ellipse, then the third order. It tells where points go on
/// the way from the true pattern to the frame, so that undoing it takes the inverse.
/// Angles are counter-clockwise on the screen, from 3 o'clock; image y runs down.
struct LensDistortion {
    /// Per cent. A linear map: with phi the azimuth and y up, x' = (I + e [[cos 2phi, sin 2phi],
    /// [sin 2phi, -cos 2phi]]) x with e = amplitude / 100. The pattern is longer by the amplitude along the
    /// azimuth and shorter by it across, and points between move along the circle too, which the stretching
    /// of a project does not do.
    double dfEllipseAmplitude = 0;
    double dfEllipseAzimuth = 0;  ///< degrees
    /// Outward displacement at the reference radius in per cent of it, going with the cube of the radius:
    /// below 0 barrel, above 0 pincushion.
    double dfRadial = 0;
    double dfSpiral = 0;  ///< as the radial one, but along the circle, counter-clockwise
    double dfRadius = 0;  ///< reference radius, pixels; above 0 where there is a third order

    bool hasEllipse() const { return dfEllipseAmplitude != 0; }  ///< any
    bool hasThirdOrder() const { return dfRadial != 0 || dfSpiral != 0; }
};

/// Where a point of the undistorted pattern goes; both are pixels from the direct beam.
std::array<double, 2> distorted(const std::array<double, 2>& ptOffset, const LensDistortion& lens);

/// The third order that undoes that of the lens at the reference radius, by the same form at the distorted
/// place: per cent outwards, and per cent clockwise.
std::array<double, 2> thirdOrderThatUndoes(const LensDistortion& lens);

/// Pixels from the beam in the undistorted pattern beyond which nothing comes nearer than dfPixels on the
/// frame; infinite where a barrel folds the pattern over within dfPixels.
double undistortedReach(double dfPixels, const LensDistortion& lens);

}  // namespace tessera
