// DiffractionGeometry: from the indices of a reflection to its place on a frame, and back, in double
// precision.
#pragma once

#include "geometry/angles.h"
#include "geometry/doublevector.h"

#include <array>
#include <cmath>
#include <optional>

namespace tessera {

/// What moves a place in the plane of the frame, in a scalar that may carry derivatives.
///
/// Azimuths count counter-clockwise on the screen from 3 o'clock. A distortion of amplitude A (a fraction)
/// and azimuth φ is held as A·cos 2φ and A·sin 2φ, which have no trouble where A is 0. All terms are taken at
/// the measured place, relative to the direct beam, and added up; each undoes its distortion.
template <class T>
struct PlaneTerms {
    T centreX = T(0);  ///< pixels, what the direct beam of every frame is off by
    T centreY = T(0);
    T axis = T(0);           ///< degrees, azimuth of the rotation axis
    T stretchingCos = T(0);  ///< along the radius alone, as applyStretching() has it
    T stretchingSin = T(0);
    T ellipseCos = T(0);  ///< linear: longer along the azimuth, shorter across it, as astigmatism makes it
    T ellipseSin = T(0);
    T radial = T(0);        ///< third order along the radius, a fraction at the reference radius
    T spiral = T(0);        ///< third order along the circle, clockwise on the screen, likewise
    T parabolicCos = T(0);  ///< second order: along the radius, to the azimuth that it is strongest at
    T parabolicSin = T(0);  ///< (B·cos φ, B·sin φ), a fraction at the reference radius
};

/// What turns the crystal.
template <class T>
struct TurnTerms {
    T outOfPlane = T(0);  ///< degrees, of the rotation axis towards +z
    T scale = T(1);       ///< of the tilts, about the middle tilt
    T offset = T(0);      ///< degrees, added to the tilts
};

/// All numbers of a series' geometry, with the cell.
///
/// Laboratory frame: x along the rotation axis (its projection where it leaves the plane), z along the beam.
/// With a wavelength, an axis and a stretching alone this is the geometry of rotationgeometry.h.
struct DiffractionGeometry {
    std::array<DoubleVector, 3> aBasis = {};  ///< a*, b*, c*, Å⁻¹, laboratory frame at tilt 0
    PlaneTerms<double> plane;
    TurnTerms<double> turn;
    double dfWavelength = 0;  ///< Å
    double dfPixelSize = 0;   ///< Å⁻¹ per pixel
    double dfRadius = 256;    ///< pixels, reference of the second and third order
    double dfMiddleTilt = 0;  ///< degrees, where the scale of the tilts leaves them
};

/// A place on a frame relative to its direct beam, pixels; image y runs down.
struct FramePlace {
    double dfX = 0;
    double dfY = 0;
};

/// The place freed of its distortions, relative to the beam as it is, pixels.
/// Source: the third order by Brázda, Klementová, Krysiak & Palatinus (2022), IUCrJ 9, 735–755.
template <class T>
std::array<T, 2> undistorted(const PlaneTerms<T>& terms, double dfRadius, const FramePlace& place)
{
    const T x = place.dfX - terms.centreX;
    const T y = place.dfY - terms.centreY;
    const T squares = x * x + y * y;
    T along = T(0);  // of the radius; the direct beam itself has no azimuth
    if (squares > T(0)) {
        along = ((x * x - y * y) * terms.stretchingCos - 2.0 * x * y * terms.stretchingSin) / squares;
    }
    const T second = (x * terms.parabolicCos - y * terms.parabolicSin) / dfRadius;
    const T third = squares / (dfRadius * dfRadius);
    const T scale = 1.0 + along + second + third * terms.radial;
    const T spiral = third * terms.spiral;
    return {scale * x + terms.ellipseCos * x - terms.ellipseSin * y - spiral * y,
            scale * y - terms.ellipseSin * x - terms.ellipseCos * y + spiral * x};
}

/// The place that undistorted() takes to the given one, by repeated correction.
/// @return none where the distortions are so strong that no place has it
std::optional<FramePlace> distorted(const PlaneTerms<double>& terms, double dfRadius, const FramePlace& flat);

/// The point of the Ewald sphere that a place shows, laboratory frame, Å⁻¹.
template <class T>
std::array<T, 3> spherePoint(const PlaneTerms<T>& terms, const DiffractionGeometry& fixed,
                             const FramePlace& place)
{
    using std::cos;
    using std::sin;
    using std::sqrt;
    const std::array<T, 2> flat = undistorted(terms, fixed.dfRadius, place);
    const T angle = terms.axis * (g_dfPi / 180);
    const T cosine = cos(angle);
    const T sine = sin(angle);
    const T x = fixed.dfPixelSize * (cosine * flat[0] - sine * flat[1]);
    const T y = fixed.dfPixelSize * (sine * flat[0] + cosine * flat[1]);
    const double dfK = 1 / fixed.dfWavelength;
    const T shrink = dfK / sqrt(x * x + y * y + dfK * dfK);
    // k - k·shrink, without the difference of two large numbers
    const T lift = (x * x + y * y) * shrink * shrink / (dfK * (1.0 + shrink));
    return {x * shrink, y * shrink, lift};
}

/// The rotation, row by row, that takes a point of the crystal at tilt 0 to the laboratory at a tilt.
/// @param dfTilt  degrees, as the series has it
template <class T>
std::array<T, 9> turnToLaboratory(const TurnTerms<T>& terms, double dfMiddleTilt, double dfTilt)
{
    using std::cos;
    using std::sin;
    const T angle = (terms.offset + dfMiddleTilt + terms.scale * (dfTilt - dfMiddleTilt)) * (g_dfPi / 180);
    const T out = terms.outOfPlane * (g_dfPi / 180);
    const T axisX = cos(out);
    const T axisZ = sin(out);
    const T c = cos(angle);
    const T s = sin(angle);
    const T rest = 1.0 - c;
    return {c + rest * axisX * axisX, s * axisZ,  rest * axisX * axisZ,    -s * axisZ, c, s * axisX,
            rest * axisX * axisZ,     -s * axisX, c + rest * axisZ * axisZ};
}

/// The point of reciprocal space that a place on a frame shows, laboratory frame at tilt 0, Å⁻¹.
DoubleVector pointOfPlace(const DiffractionGeometry& geometry, const FramePlace& place, double dfTilt);

/// The point h·a* + k·b* + l·c* as the frame of that tilt has it: turned, laboratory frame, Å⁻¹.
DoubleVector laboratoryPoint(const DiffractionGeometry& geometry, const DoubleVector& index, double dfTilt);

/// Where a reflection lies on the frame of that tilt: its point, moved along the beam onto the Ewald sphere.
/// @return none for a point further from the beam than the sphere reaches, or where the distortions are so
///         strong that no place has it
std::optional<FramePlace> placeOfReflection(const DiffractionGeometry& geometry, const DoubleVector& index,
                                            double dfTilt);

/// The real indices of a point in the crystal's frame; not finite where the basis spans no cell.
DoubleVector indicesOfPoint(const DiffractionGeometry& geometry, const DoubleVector& point);

/// Amplitude as a fraction and azimuth in degrees, −90 to 90, of a distortion held as A·cos 2φ and A·sin 2φ.
struct Distortion {
    double dfAmplitude = 0;
    double dfAzimuth = 0;
};
Distortion distortionOf(double dfCos, double dfSin);

}  // namespace tessera
