#include "geometry/diffractiongeometry.h"

namespace tessera {

std::optional<FramePlace> distorted(const PlaneTerms<double>& terms, double dfRadius, const FramePlace& flat)
{
    // Each step multiplies the error by about the relative size of the distortion.
    const int nSteps = 60;
    const double dfEnough = 1e-10;  // pixels
    FramePlace place = {flat.dfX + terms.centreX, flat.dfY + terms.centreY};
    for (int n = 0; n < nSteps; ++n) {
        const std::array<double, 2> found = undistorted(terms, dfRadius, place);
        place.dfX += flat.dfX - found[0];
        place.dfY += flat.dfY - found[1];
        if (std::hypot(flat.dfX - found[0], flat.dfY - found[1]) < dfEnough) {
            return place;
        }
    }
    return std::nullopt;
}

UndoneShift undoneShift(const PlaneTerms<double>& terms, double dfRadius, double dfX, double dfY)
{
    const int nMostSteps = 30;
    const double dfEnough = 1e-11;  // pixels
    UndoneShift undone = {dfX, dfY};
    const bool bNone = terms.radial == 0 && terms.spiral == 0 && terms.parabolicCos == 0 &&
                       terms.parabolicSin == 0;
    for (int n = 0; n < nMostSteps && !bNone; ++n) {
        const double x = undone.dfX, y = undone.dfY, dfSquare = dfRadius * dfRadius;
        const double dfThird = (x * x + y * y) / dfSquare;
        const double dfScale = (x * terms.parabolicCos - y * terms.parabolicSin) / dfRadius +
                               dfThird * terms.radial;
        const double dfSpiral = dfThird * terms.spiral;
        const double dfScaleX = terms.parabolicCos / dfRadius + 2 * terms.radial * x / dfSquare;
        const double dfScaleY = -terms.parabolicSin / dfRadius + 2 * terms.radial * y / dfSquare;
        const double dfSpiralX = 2 * terms.spiral * x / dfSquare, dfSpiralY = 2 * terms.spiral * y / dfSquare;
        const double dfXX = 1 - dfScale - x * dfScaleX + y * dfSpiralX;
        const double dfXY = dfSpiral - x * dfScaleY + y * dfSpiralY;
        const double dfYX = -dfSpiral - y * dfScaleX - x * dfSpiralX;
        const double dfYY = 1 - dfScale - y * dfScaleY - x * dfSpiralY;
        const double dfDeterminant = dfXX * dfYY - dfXY * dfYX;
        if (!(dfDeterminant > 0.01)) {  // close to a fold of the plane
            break;
        }
        undone.aInverse = {dfYY / dfDeterminant, -dfXY / dfDeterminant, -dfYX / dfDeterminant,
                           dfXX / dfDeterminant};
        const double dfRestX = dfX + dfScale * x - dfSpiral * y - x;
        const double dfRestY = dfY + dfScale * y + dfSpiral * x - y;
        if (std::hypot(dfRestX, dfRestY) < dfEnough) {
            return undone;
        }
        undone.dfX += undone.aInverse[0] * dfRestX + undone.aInverse[1] * dfRestY;
        undone.dfY += undone.aInverse[2] * dfRestX + undone.aInverse[3] * dfRestY;
    }
    return {dfX, dfY};
}

DoubleVector pointOfPlace(const DiffractionGeometry& geometry, const FramePlace& place, double dfTilt)
{
    const std::array<double, 3> seen = spherePoint(geometry.plane, geometry, place);
    const std::array<double, 9> turn = turnToLaboratory(geometry.turn, geometry.dfMiddleTilt, dfTilt);
    DoubleVector point;
    for (size_t n = 0; n < 3; ++n) {
        point[n] = turn[n] * seen[0] + turn[n + 3] * seen[1] + turn[n + 6] * seen[2];
    }
    return point;
}

DoubleVector laboratoryPoint(const DiffractionGeometry& geometry, const DoubleVector& index, double dfTilt)
{
    const std::array<double, 9> turn = turnToLaboratory(geometry.turn, geometry.dfMiddleTilt, dfTilt);
    DoubleVector point;
    for (size_t n = 0; n < 3; ++n) {
        point[n] = index[0] * geometry.aBasis[0][n] + index[1] * geometry.aBasis[1][n] +
                   index[2] * geometry.aBasis[2][n];
    }
    return {turn[0] * point[0] + turn[1] * point[1] + turn[2] * point[2],
            turn[3] * point[0] + turn[4] * point[1] + turn[5] * point[2],
            turn[6] * point[0] + turn[7] * point[1] + turn[8] * point[2]};
}

std::optional<FramePlace> placeOfReflection(const DiffractionGeometry& geometry, const DoubleVector& index,
                                            double dfTilt)
{
    const DoubleVector point = laboratoryPoint(geometry, index, dfTilt);
    const double dfK = 1 / geometry.dfWavelength;
    const double dfRest = dfK * dfK - point[0] * point[0] - point[1] * point[1];
    if (!(dfRest > 0)) {
        return std::nullopt;
    }
    const double dfScale = dfK / std::sqrt(dfRest) / geometry.dfPixelSize;
    const double dfAngle = radians(geometry.plane.axis);
    const double dfCos = std::cos(dfAngle);
    const double dfSin = std::sin(dfAngle);
    return distorted(
        geometry.plane, geometry.dfRadius,
        {dfScale * (dfCos * point[0] + dfSin * point[1]), dfScale * (dfCos * point[1] - dfSin * point[0])});
}

DoubleVector indicesOfPoint(const DiffractionGeometry& geometry, const DoubleVector& point)
{
    const auto& [a, b, c] = geometry.aBasis;
    const double dfVolume = dot(a, cross(b, c));
    return {dot(point, cross(b, c)) / dfVolume, dot(point, cross(c, a)) / dfVolume,
            dot(point, cross(a, b)) / dfVolume};
}

Distortion distortionOf(double dfCos, double dfSin)
{
    return {std::hypot(dfCos, dfSin), degrees(std::atan2(dfSin, dfCos)) / 2};
}

}  // namespace tessera
