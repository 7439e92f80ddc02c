// DiffractionGeometry: from the indices of a reflection to its place on a frame, and back, in double
// precision.
#pragma once

#include "geometry/angles.h"
#include "geometry/doublevector.h"

#include <array>
#include <cmath>
#include <optional>
#include <type_traits>

namespace tessera {

/// What moves a place in the plane of the frame, in a scalar that may carry derivatives.
///
/// Azimuths count counter-clockwise on the screen from 3 o'clock. A distortion of amplitude A (a fraction)
/// and azimuth φ is held as A·cos 2φ and A·sin 2φ, which have no trouble where A is 0. Each term undoes its
/// distortion. The second and the third order are those of the projector lenses, which come last: they are
/// undone first, exactly, by what goes with the place before them. The ellipse is taken at the place that
/// comes out, the stretching at the measured one, and both are added.
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

/// A place before the second and the third order, by Newton's method.
struct UndoneShift {
    double dfX = 0;  ///< relative to the direct beam, pixels
    double dfY = 0;
    std::array<double, 4> aInverse = {1, 0, 0, 1};  ///< its derivatives by the place on the frame, row by row
};
UndoneShift undoneShift(const PlaneTerms<double>& terms, double dfRadius, double dfX, double dfY);

/// The number in a scalar that carries derivatives, as ceres::Jet does.
template <class T>
double valueOf(const T& scalar)
{
    if constexpr (std::is_arithmetic_v<T>) {
        return scalar;
    } else {
        return scalar.a;
    }
}

/// What undoes the second and the third order at a place that they have not moved yet, pixels.
template <class T>
std::array<T, 2> projectorShift(const PlaneTerms<T>& terms, double dfRadius, double dfX, double dfY)
{
    const double dfThird = (dfX * dfX + dfY * dfY) / (dfRadius * dfRadius);
    const T scale = (dfX * terms.parabolicCos - dfY * terms.parabolicSin) / dfRadius + dfThird * terms.radial;
    const T spiral = dfThird * terms.spiral;
    return {scale * dfX - spiral * dfY, scale * dfY + spiral * dfX};
}

/// Where a place would lie without the second and the third order; both relative to the direct beam, pixels.
/// Where the distortion is so strong that it folds the frame over, what undoes it at the place itself is
/// taken.
template <class T>
std::array<T, 2> beforeProjector(const PlaneTerms<T>& terms, double dfRadius, const std::array<T, 2>& place)
{
    PlaneTerms<double> values;
    values.radial = valueOf(terms.radial);
    values.spiral = valueOf(terms.spiral);
    values.parabolicCos = valueOf(terms.parabolicCos);
    values.parabolicSin = valueOf(terms.parabolicSin);
    const double dfPlaceX = valueOf(place[0]), dfPlaceY = valueOf(place[1]);
    const UndoneShift undone = undoneShift(values, dfRadius, dfPlaceX, dfPlaceY);
    // The last step of Newton's method, in which the derivatives come along: those of the inverse function.
    const std::array<T, 2> shift = projectorShift(terms, dfRadius, undone.dfX, undone.dfY);
    const T restX = place[0] + shift[0] - undone.dfX;
    const T restY = place[1] + shift[1] - undone.dfY;
    return {undone.dfX + undone.aInverse[0] * restX + undone.aInverse[1] * restY,
            undone.dfY + undone.aInverse[2] * restX + undone.aInverse[3] * restY};
}

/// The place freed of its distortions, relative to the beam as it is, pixels.
/// Source: the second and third order by Brázda, Klementová, Krysiak & Palatinus (2022), IUCrJ 9, 735–755.
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
    const std::array<T, 2> before = beforeProjector(terms, dfRadius, {x, y});
    return {before[0] + along * x + terms.ellipseCos * before[0] - terms.ellipseSin * before[1],
            before[1] + along * y - terms.ellipseSin * before[0] - terms.ellipseCos * before[1]};
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
