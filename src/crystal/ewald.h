// Ewald geometry: from a point of reciprocal space back to tilt, frame and pixel.
#pragma once

#include "geometry/rotationgeometry.h"
#include "geometry/seriesdistortion.h"
#include "records/peak3d.h"
#include "records/runreport.h"
#include "records/vec3d.h"

#include <QList>

namespace tessera {

/// What the way back to the frames needs of a data set.
struct FramePositionGeometry {
    QList<double> listOverallTilt;  ///< degrees, one per frame
    BeamCentres centres;            ///< direct beam of each frame, raw pixels
    double dfPixelSize = 0.001;     ///< Å⁻¹ per pixel
    double dfRotationAxis = 0;      ///< azimuth on the screen, degrees: see rotationgeometry.h
    double dfWavelength = 0.0251;   ///< Å
    SeriesDistortion distortion;    ///< distortions that the places get; the stretching is not among them
};

/// The tilt in radians at which the Ewald sphere cuts `g` (Å⁻¹, laboratory frame at tilt 0, x rotation
/// axis, z beam).
///
/// Solves A·sin θ + B·cos θ + C = 0, with A = −2·g.y/λ, B = 2·g.z/λ and C = |g|² for an axis in the plane of
/// the frame. A point passes the sphere twice in a full turn. Goniometers tilt by less than 90 degrees, so
/// the solution within ±π/2 is taken: the one with the smaller sin θ if both are (for g.z = 0 the one with
/// the greater cos θ), and the other one if neither is.
///
/// The condition is that of a sphere about (0, 0, −1/λ), while ewaldPoint() lifts to the sphere about
/// (0, 0, +1/λ). So this is the tilt at which the Friedel mate −g is cut in the frame of the mapping; it
/// lies about λ·|g|² divided by the distance of g from the axis, in radians, away from the tilt at which
/// the mapping put g: 0.7 degrees at 0.5 Å⁻¹ and 0.0251 Å. For that tilt pass −g, as the refinements of
/// tilts do (calculatedTilt()).
/// @return false, with `dfTilt` untouched, if the sphere does not reach the point, if the point lies on
///         the rotation axis, or if the numbers are not finite
/// @param dfAxisOutOfPlane  degrees that the rotation axis leaves the plane of the frame by, towards +z
bool calEwaldTilt(double dfWavelength, const Vec3D& g, double& dfTilt, double dfAxisOutOfPlane = 0);

/// Index of the frame with the tilt nearest to `dfFrameAngle` (degrees), the lowest of equals; -1 for an
/// empty list.
int calClosestFrame(double dfFrameAngle, const QList<double>& listOverallTilt);

/// Fills in dfFrameTilt (degrees), nFrame (from 0), dfX2D and dfY2D (raw pixels) of each peak from its fX3D,
/// fY3D, fZ3D (Å⁻¹, laboratory frame at tilt 0).
///
/// The tilt is that of calEwaldTilt(), with what is said there about the sphere, and the frame that with the
/// nearest tilt. The pixel is where the line from (0, 0, 1/λ) through the point, rotated by the tilt, meets
/// the flat pattern; then the distortions are applied, but not the stretching, so in a series with a
/// stretching the pixel is the corrected one and not that on the frame.
/// @return false, with `listPeak` as it was and a line in the log, at the first peak without tilt, frame or
///         place
bool calFramePosition(QList<Peak3D>& listPeak, const FramePositionGeometry& geometry, CRunReport& report);

}  // namespace tessera
