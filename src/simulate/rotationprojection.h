// CRotationProjection: where a reciprocal lattice point shows on a frame, from the physics.
#pragma once

#include "simulate/matrix3.h"

namespace tessera {

/// The fixed geometry of a rotation series, with formulas of its own: the independent counterpart
/// of the program's mapping from frames to reciprocal space.
///
/// Laboratory frame: x the rotation axis, z from the crystal towards the source, so that the beam
/// runs along -z; the Ewald sphere passes through the origin with its centre at (0, 0, 1/lambda).
/// Image x runs right, y down; the axis has the direction (cos, -sin) of its azimuth.
class CRotationProjection {
public:
    /// @param dfWavelength      Å
    /// @param dfPixelSize       Å⁻¹ per pixel
    /// @param dfAxis            azimuth of the rotation axis, degrees
    /// @param dfStretchAmplitude, dfStretchAzimuth  elliptic distortion as the project file tells
    ///        it, per cent and degrees: the pattern is longer along the azimuth by the amplitude
    CRotationProjection(double dfWavelength, double dfPixelSize, double dfAxis, double dfStretchAmplitude = 0,
                        double dfStretchAzimuth = 0);

    /// The reciprocal vector of a lattice point when the crystal stands at a tilt (degrees).
    Vector3 turned(const Vector3& vecLattice, double dfTilt) const;

    /// Signed distance of a turned point from the Ewald sphere, Å⁻¹, positive inside.
    double excitationError(const Vector3& vecTurned) const;
    /// The same with the beam tilted against the laboratory's.
    /// @param vecSource  of length 1, from the crystal towards the source
    double excitationError(const Vector3& vecTurned, const Vector3& vecSource) const;

    /// Pixel offset from the direct beam at which a turned point shows: the direction of the
    /// diffracted ray, met by a flat detector. Distortion included.
    std::array<double, 2> spotOffset(const Vector3& vecTurned) const;

private:
    double m_dfRadius;  ///< of the sphere, Å⁻¹
    double m_dfPixelSize;
    double m_dfAxis;  ///< radians
    double m_dfStretch;
    double m_dfStretchAzimuth;  ///< radians
};

/// Mean over a frame's tilt slice of the rocking curve exp(-s²/(2 w²)), the excitation error s
/// running linearly from dfFirst to dfLast (Å⁻¹) through the slice; w = dfWidth (Å⁻¹).
double meanRockingCurve(double dfFirst, double dfLast, double dfWidth);

/// An orientation of the crystal by chance, every one as likely as any other.
/// Source: Shoemake (1992), Graphics Gems III, 124. The three numbers lie in 0 to 1.
Matrix3 orientationFromUniform(double dfU1, double dfU2, double dfU3);

}  // namespace tessera
