// DiffractionGeometry: computes the place of a reflection on a frame from its indices, and back, in double
// precision.
#pragma once

#include "geometry/angles.h"
#include "geometry/doublevector.h"

#include <array>
#include <cmath>
#include <optional>
#include <type_traits>

namespace tessera {

/// The numbers of the geometry that act in the plane of the frame. T may be a scalar with derivatives.
///
/// Azimuths count counter-clockwise on the screen from 3 o'clock. A distortion of amplitude A (a fraction)
/// and azimuth φ is described by A·cos 2φ and A·sin 2φ, whose derivatives exist where A is 0, too. Each
/// number describes the correction that undoes its distortion. The distortions of second and third order are
/// those of the projector lenses, which act last. So they are undone first, and exactly: the correction is
/// the one for the place before the distortion. Then the correction of the ellipse for the place found in
/// this way and the correction of the stretching for the measured place are added.
template <class T>
struct PlaneTerms {
    T centreX = T(0);        ///< offset of the direct beam, the same on every frame, pixels
    T centreY = T(0);        ///< likewise
    T axis = T(0);           ///< degrees, azimuth of the rotation axis
    T stretchingCos = T(0);  ///< stretching, which moves places along the radius only: see applyStretching()
    T stretchingSin = T(0);  ///< likewise
    T ellipseCos = T(0);     ///< ellipse, as from astigmatism: longer along the azimuth and shorter across it
    T ellipseSin = T(0);     ///< likewise
    T radial = T(0);         ///< third order along the radius, a fraction at the reference radius
    T spiral = T(0);         ///< third order along the circle, clockwise on the screen, likewise
    T parabolicCos = T(0);  ///< second order along the radius: B·cos φ, a fraction at the reference radius,
                            ///< with the azimuth φ at which it is strongest
    T parabolicSin = T(0);  ///< B·sin φ
};

/// The numbers of the geometry that act on the rotation of the crystal. T may be a scalar with derivatives.
template <class T>
struct TurnTerms {
    T outOfPlane = T(0);  ///< angle of the rotation axis towards +z, degrees
    T scale = T(1);       ///< factor of the tilts, counted from the middle tilt
    T offset = T(0);      ///< degrees, added to all tilts
};

/// All numbers of the geometry of a series, with the cell.
///
/// Laboratory frame: x along the projection of the rotation axis onto the plane of the frame, z along the
/// beam. If only wavelength, pixel size, axis and stretching are set, the geometry is that of
/// rotationgeometry.h.
struct DiffractionGeometry {
    std::array<DoubleVector, 3> aBasis = {};  ///< a*, b*, c*, Å⁻¹, laboratory frame at tilt 0
    PlaneTerms<double> plane;                 ///< numbers of the plane
    TurnTerms<double> turn;                   ///< numbers of the rotation
    double dfWavelength = 0;                  ///< Å
    double dfPixelSize = 0;                   ///< Å⁻¹ per pixel
    double dfRadius = 256;                    ///< reference radius of the second and third order, pixels
    double dfMiddleTilt = 0;                  ///< the tilt that the scale does not change, degrees
};

/// A place on a frame relative to its direct beam, pixels; image y runs down.
struct FramePlace {
    double dfX = 0;
    double dfY = 0;
};

/// A place before the distortions of second and third order.
struct UndoneShift {
    double dfX = 0;  ///< relative to the direct beam, pixels
    double dfY = 0;
    std::array<double, 4> aInverse = {1, 0, 0, 1};  ///< its derivatives by the place on the frame, row by row
};
/// Finds by Newton's method the place before the distortions of second and third order for a place on the
/// frame, both relative to the direct beam in pixels. Where the distortion folds the plane, so that there is
/// no such place, it returns the place itself.
UndoneShift undoneShift(const PlaneTerms<double>& terms, double dfRadius, double dfX, double dfY);

/// The value of a scalar without its derivatives, such as of ceres::Jet.
template <class T>
double valueOf(const T& scalar)
{
    if constexpr (std::is_arithmetic_v<T>) {
        return scalar;
    } else {
        return scalar.a;
    }
}

/// The shift in pixels that undoes the second and the third order, for a place (dfX, dfY) before these
/// distortions.
template <class T>
std::array<T, 2> projectorShift(const PlaneTerms<T>& terms, double dfRadius, double dfX, double dfY)
{
    const double dfThird = (dfX * dfX + dfY * dfY) / (dfRadius * dfRadius);
    const T scale = (dfX * terms.parabolicCos - dfY * terms.parabolicSin) / dfRadius + dfThird * terms.radial;
    const T spiral = dfThird * terms.spiral;
    return {scale * dfX - spiral * dfY, scale * dfY + spiral * dfX};
}

/// Undoes the second and the third order. Places are relative to the direct beam, in pixels. Where the
/// distortion folds the plane, the correction for the place itself is used.
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
    // The last step of Newton's method is done in T, which yields the derivatives of the inverse function.
    const std::array<T, 2> shift = projectorShift(terms, dfRadius, undone.dfX, undone.dfY);
    const T restX = place[0] + shift[0] - undone.dfX;
    const T restY = place[1] + shift[1] - undone.dfY;
    return {undone.dfX + undone.aInverse[0] * restX + undone.aInverse[1] * restY,
            undone.dfY + undone.aInverse[2] * restX + undone.aInverse[3] * restY};
}

/// Undoes all distortions of a place. The result is relative to the direct beam after its offset, in pixels.
/// Source: the second and third order by Brázda, Klementová, Krysiak & Palatinus (2022), IUCrJ 9, 735–755.
template <class T>
std::array<T, 2> undistorted(const PlaneTerms<T>& terms, double dfRadius, const FramePlace& place)
{
    const T x = place.dfX - terms.centreX;
    const T y = place.dfY - terms.centreY;
    const T squares = x * x + y * y;
    T along = T(0);  // stretching as a fraction of the radius; 0 at the direct beam, which has no azimuth
    if (squares > T(0)) {
        along = ((x * x - y * y) * terms.stretchingCos - 2.0 * x * y * terms.stretchingSin) / squares;
    }
    const std::array<T, 2> before = beforeProjector(terms, dfRadius, {x, y});
    return {before[0] + along * x + terms.ellipseCos * before[0] - terms.ellipseSin * before[1],
            before[1] + along * y - terms.ellipseSin * before[0] - terms.ellipseCos * before[1]};
}

/// Finds by iteration the place on the frame for which undistorted() returns `flat`.
/// @return nothing where the distortions are so strong that there is no such place
std::optional<FramePlace> distorted(const PlaneTerms<double>& terms, double dfRadius, const FramePlace& flat);

/// The point of the Ewald sphere that is seen at a place on a frame, laboratory frame, Å⁻¹.
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
    // This is k − k·shrink, rearranged to avoid the difference of two nearly equal numbers.
    const T lift = (x * x + y * y) * shrink * shrink / (dfK * (1.0 + shrink));
    return {x * shrink, y * shrink, lift};
}

/// The rotation matrix, row by row, that turns a point from its position at tilt 0 to that at a tilt.
/// @param dfTilt  degrees, before scale and offset are applied
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

/// The point of reciprocal space that is seen at a place on a frame, laboratory frame at tilt 0, Å⁻¹.
DoubleVector pointOfPlace(const DiffractionGeometry& geometry, const FramePlace& place, double dfTilt);

/// The point h·a* + k·b* + l·c* turned to the tilt of a frame, laboratory frame, Å⁻¹.
DoubleVector laboratoryPoint(const DiffractionGeometry& geometry, const DoubleVector& index, double dfTilt);

/// The place of a reflection on a frame of a given tilt: its point is moved along the beam onto the Ewald
/// sphere.
/// @return nothing for a point that is farther from the beam than the radius of the sphere, or where the
///         distortions are so strong that there is no such place
std::optional<FramePlace> placeOfReflection(const DiffractionGeometry& geometry, const DoubleVector& index,
                                            double dfTilt);

/// The indices, as real numbers, of a point at tilt 0; not finite where the basis vectors are co-planar.
DoubleVector indicesOfPoint(const DiffractionGeometry& geometry, const DoubleVector& point);

/// A distortion by amplitude and azimuth.
struct Distortion {
    double dfAmplitude = 0;  ///< a fraction
    double dfAzimuth = 0;    ///< degrees, −90 to 90
};

/// The distortion that is given by A·cos 2φ and A·sin 2φ.
Distortion distortionOf(double dfCos, double dfSin);

}  // namespace tessera
