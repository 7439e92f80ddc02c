// GeometryNumbers: the geometry of a series as one row of numbers, each of which may be free in a fit.
#pragma once

#include "geometry/diffractiongeometry.h"

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// The places of the numbers in the row.
enum GeometryNumber {
    CellFirst = 0,      ///< the first of the nine numbers of the cell, see CellForm
    CellLast = 8,       ///< the last of them
    Axis,               ///< degrees
    CentreX,            ///< pixels
    CentreY,            ///< pixels
    StretchingCos,      ///< fraction, amplitude·cos 2φ, φ counted on the screen
    StretchingSin,      ///< fraction
    EllipseAlong,       ///< fraction, amplitude·cos 2(φ − φ₀) with φ₀ the axis as the fit began
    EllipseAcross,      ///< fraction, amplitude·sin 2(φ − φ₀)
    ThirdOrderRadial,   ///< fraction at the reference radius
    ThirdOrderSpiral,   ///< fraction at the reference radius
    ParabolicCos,       ///< fraction at the reference radius, amplitude·cos φ, φ counted on the screen
    ParabolicSin,       ///< fraction at the reference radius
    TiltScale,          ///< factor
    TiltOffset,         ///< degrees
    AxisOutOfPlane,     ///< degrees
    GeometryNumbersEnd  ///< how many there are
};

/// The values of all numbers, in the order of GeometryNumber.
using GeometryNumbers = std::array<double, GeometryNumbersEnd>;

/// Whether a number describes the cell.
inline bool isOfCell(int nNumber)
{
    return nNumber <= CellLast;
}

/// The name of a number in summaries: "axis", "centreX"; the numbers of the cell are "cell1" to "cell9".
QString geometryNumberName(int nNumber);

/// How many numbers act in the plane of the frames: those from Axis to ParabolicSin.
constexpr int g_nPlaneNumbers = TiltScale - Axis;

/// The terms in the plane of the frames, from the numbers Axis to ParabolicSin.
/// @tparam T  a real number, or a scalar that carries derivatives
/// @param dfCos, dfSin  cos 2φ₀ and sin 2φ₀ of the azimuth from which the ellipse is counted
template <class T>
PlaneTerms<T> planeTermsOf(const std::array<T, g_nPlaneNumbers>& number, double dfCos, double dfSin)
{
    const auto at = [&](GeometryNumber which) { return number[which - Axis]; };
    PlaneTerms<T> terms;
    terms.axis = at(Axis);
    terms.centreX = at(CentreX);
    terms.centreY = at(CentreY);
    terms.stretchingCos = at(StretchingCos);
    terms.stretchingSin = at(StretchingSin);
    terms.ellipseCos = at(EllipseAlong) * dfCos - at(EllipseAcross) * dfSin;
    terms.ellipseSin = at(EllipseAlong) * dfSin + at(EllipseAcross) * dfCos;
    terms.radial = at(ThirdOrderRadial);
    terms.spiral = at(ThirdOrderSpiral);
    terms.parabolicCos = at(ParabolicCos);
    terms.parabolicSin = at(ParabolicSin);
    return terms;
}

/// The terms of the rotation of the crystal, from the numbers TiltScale, TiltOffset and AxisOutOfPlane.
/// @tparam T  as for planeTermsOf()
template <class T>
TurnTerms<T> turnTermsOf(const std::array<T, 3>& number)
{
    TurnTerms<T> terms;
    terms.scale = number[0];
    terms.offset = number[1];
    terms.outOfPlane = number[2];
    return terms;
}

/// The numbers of a geometry; those of the cell are left 0.
/// @param dfAzimuthZero  degrees, azimuth from which the ellipse is counted
GeometryNumbers numbersOf(const DiffractionGeometry& geometry, double dfAzimuthZero);
/// Puts all numbers except those of the cell into a geometry.
void setNumbers(DiffractionGeometry& geometry, const GeometryNumbers& numbers, double dfAzimuthZero);

}  // namespace tessera
