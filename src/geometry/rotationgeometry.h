// Rotation geometry: the functions that take a place on a frame to a point of reciprocal space.
#pragma once

#include "geometry/matrix3.h"
#include "records/peak3d.h"
#include "records/vec3d.h"

#include <QList>
#include <QPointF>

namespace tessera {

// Frames of reference. Image x runs to the right and image y runs down. The rotation axis is the line
// through the direct beam with the direction (cos φ, −sin φ) in image coordinates, so φ counts
// counter-clockwise on the screen and 0 is 3 o'clock. rotationZ(φ) takes it to the laboratory x axis.
// The beam runs along z, and the Ewald sphere has its centre at (0, 0, 1/λ).

/// The direct beam on each frame: its position on the first frame and its drift since then.
struct BeamCentres {
    QList<QPointF> m_listShift;  ///< one entry per frame, pixels, with respect to the first frame
    double m_dfCenterX = 0;      ///< direct beam on the first frame, raw pixels
    double m_dfCenterY = 0;

    /// Whether there is a shift of frame `nFrame`.
    bool holds(int nFrame) const { return nFrame >= 0 && nFrame < m_listShift.size(); }
};

/// The direct beam on frame `nFrame` in raw pixels. Where the frame has no shift, the position on the first
/// frame is returned.
QPointF frameCentre(const BeamCentres& centres, int nFrame);

/// Rotation about the beam by an angle in degrees: rows (cos, −sin, 0), (sin, cos, 0), (0, 0, 1).
CMatrix3 rotationZ(double dfDegrees);

/// Rotation about the laboratory x axis by an angle in degrees: rows (1, 0, 0), (0, cos, −sin),
/// (0, sin, cos).
CMatrix3 rotationX(double dfDegrees);

/// Rotation about an axis that is inclined by `dfOutOfPlane` degrees from the x axis towards +z, with the
/// direction (cos, 0, sin). For 0 degrees it is rotationX() to the bit.
CMatrix3 rotationAboutAxis(double dfDegrees, double dfOutOfPlane);

/// A matrix applied to a vector. The sums are formed in double precision and then rounded to single
/// precision.
Vec3D rotated(const CMatrix3& matrix, const Vec3D& v);

/// Lifts a point of the flat pattern onto the Ewald sphere, along the line to the sphere's centre.
/// The direct beam (0, 0, 0) stays (0, 0, 0).
///
/// @param vecFlat       relative to the direct beam, Å⁻¹, x along the rotation axis, z = 0
/// @param dfWavelength  Å; 0 leaves the components undefined (not a number)
/// @return Å⁻¹, laboratory frame at tilt 0
/// Source: Ewald (1921), Z. Krist. 56, 129.
Vec3D ewaldPoint(const Vec3D& vecFlat, double dfWavelength);

/// Undoes an elliptical distortion of the pattern: scales `pt` by
/// 1 + (dfAmplitude/100)·cos(2·(−atan2(y, x) − dfAzimuth)).
///
/// @param pt           centre-relative pixels; image y runs down, so the polar angle enters negated
/// @param dfAmplitude  per cent
/// @param dfAzimuth    degrees
QPointF applyStretching(QPointF pt, double dfAmplitude, double dfAzimuth);

/// Centre-relative pixels to raw frame pixels; (0, 0) for a frame outside the shift list.
QPointF calPeak2DPosFrame(const BeamCentres& centres, int nFrameNo, QPointF pt);

/// Raw frame pixels to centre-relative pixels; (0, 0) for a frame outside the shift list.
QPointF calPeak2DPosCenterCorrected(const BeamCentres& centres, int nFrameNo, QPointF pt);

/// Distance in pixels from a raw frame point to the rotation axis of azimuth `dfRotationAxis` (degrees)
/// through the direct beam of the frame; 0 for a frame outside the shift list.
float calDistanceToRotationAxis(const BeamCentres& centres, double dfRotationAxis, int nFrameNo,
                                const QPointF& pt);

/// Angle in degrees, 0 to 90, between the rotation axis of azimuth `dfRotationAxis` (degrees) and the line
/// from the direct beam to the peak's raw position; 0 for a frame outside the shift list.
float calAngleToRotationAxis(const BeamCentres& centres, double dfRotationAxis, int nFrameNo,
                             const Peak3D& peak);

}  // namespace tessera
