#include "refinement/geometrynumbers.h"

#include <algorithm>

namespace tessera {

QString geometryNumberName(int nNumber)
{
    static const char* const aszName[] = {
        "axis",         "centreX",       "centreY",          "stretchingCos",    "stretchingSin",
        "ellipseAlong", "ellipseAcross", "thirdOrderRadial", "thirdOrderSpiral", "parabolicCos",
        "parabolicSin", "tiltScale",     "tiltOffset",       "axisOutOfPlane"};
    return isOfCell(nNumber) ? QStringLiteral("cell%1").arg(nNumber + 1)
                             : QString::fromLatin1(aszName[nNumber - Axis]);
}

GeometryNumbers numbersOf(const DiffractionGeometry& geometry, double dfAzimuthZero)
{
    const PlaneTerms<double>& plane = geometry.plane;
    const double dfCos = std::cos(2 * radians(dfAzimuthZero));
    const double dfSin = std::sin(2 * radians(dfAzimuthZero));
    GeometryNumbers numbers = {};
    numbers[Axis] = plane.axis;
    numbers[CentreX] = plane.centreX;
    numbers[CentreY] = plane.centreY;
    numbers[StretchingCos] = plane.stretchingCos;
    numbers[StretchingSin] = plane.stretchingSin;
    numbers[EllipseAlong] = plane.ellipseCos * dfCos + plane.ellipseSin * dfSin;
    numbers[EllipseAcross] = plane.ellipseSin * dfCos - plane.ellipseCos * dfSin;
    numbers[ThirdOrderRadial] = plane.radial;
    numbers[ThirdOrderSpiral] = plane.spiral;
    numbers[ParabolicCos] = plane.parabolicCos;
    numbers[ParabolicSin] = plane.parabolicSin;
    numbers[TiltScale] = geometry.turn.scale;
    numbers[TiltOffset] = geometry.turn.offset;
    numbers[AxisOutOfPlane] = geometry.turn.outOfPlane;
    return numbers;
}

void setNumbers(DiffractionGeometry& geometry, const GeometryNumbers& numbers, double dfAzimuthZero)
{
    std::array<double, g_nPlaneNumbers> aPlane;
    std::copy_n(numbers.begin() + Axis, g_nPlaneNumbers, aPlane.begin());
    std::array<double, 3> aTurn;
    std::copy_n(numbers.begin() + TiltScale, 3, aTurn.begin());
    geometry.plane = planeTermsOf(aPlane, std::cos(2 * radians(dfAzimuthZero)),
                                  std::sin(2 * radians(dfAzimuthZero)));
    geometry.turn = turnTermsOf(aTurn);
}

}  // namespace tessera
