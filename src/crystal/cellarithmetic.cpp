#include "crystal/cellarithmetic.h"

#include <algorithm>
#include <cmath>

#include "records/pi.h"

namespace tessera {

namespace {

constexpr double g_dfDegreesPerRadian = 180.0 / g_dfPi;
constexpr double g_dfCoPlanar = 1e-6;  // volume of co-planar vectors against that of a box, at the most

Vec3D divided(const Vec3D& v, float f)
{
    return {v.x / f, v.y / f, v.z / f};
}

// Rounding can push the cosine of parallel vectors just past 1.
double angleDegrees(const Vec3D& vec1, const Vec3D& vec2, float fLength1, float fLength2)
{
    const float fCosine = std::clamp(dot(vec1, vec2) / (fLength1 * fLength2), -1.f, 1.f);
    return double(std::acos(fCosine)) * g_dfDegreesPerRadian;
}

}  // namespace

std::optional<DirectBasis> reciprocalToDirectBasis(const ReciprocalBasis& basis)
{
    const Vec3D vecBC = cross(basis.b, basis.c);
    const Vec3D vecCA = cross(basis.c, basis.a);
    const Vec3D vecAB = cross(basis.a, basis.b);
    const float fVolume = dot(basis.a, vecBC);
    // Rounding leaves something of the volume of co-planar vectors: up to some 1e-7 of that of a box.
    const double dfBox = double(length(basis.a)) * double(length(basis.b)) * double(length(basis.c));
    if (!std::isfinite(fVolume) || !(std::fabs(double(fVolume)) > g_dfCoPlanar * dfBox)) {
        return std::nullopt;
    }
    return DirectBasis{divided(vecBC, fVolume), divided(vecCA, fVolume), divided(vecAB, fVolume)};
}

CellParameters basisToCellParameters(const DirectBasis& basis)
{
    const float fA = length(basis.a), fB = length(basis.b), fC = length(basis.c);
    return {double(fA),
            double(fB),
            double(fC),
            angleDegrees(basis.b, basis.c, fB, fC),
            angleDegrees(basis.a, basis.c, fA, fC),
            angleDegrees(basis.a, basis.b, fA, fB)};
}

std::optional<CellParameters> cellParameters(const ReciprocalBasis& basis)
{
    const std::optional<DirectBasis> direct = reciprocalToDirectBasis(basis);
    if (!direct) {
        return std::nullopt;
    }
    return basisToCellParameters(*direct);
}

std::optional<CellParameters> cellParametersFromList(const QList<Vec3D>& listCell)
{
    const std::optional<ReciprocalBasis> basis = basisFromList(listCell);
    return basis ? cellParameters(*basis) : std::nullopt;
}

bool reciprocalToDirectBasis(const Vec3D& vecAStar, const Vec3D& vecBStar, const Vec3D& vecCStar, Vec3D& vecA,
                             Vec3D& vecB, Vec3D& vecC)
{
    const std::optional<DirectBasis> direct = reciprocalToDirectBasis({vecAStar, vecBStar, vecCStar});
    if (!direct) {
        return false;
    }
    vecA = direct->a;
    vecB = direct->b;
    vecC = direct->c;
    return true;
}

void basisToCellParameters(const Vec3D& vecA, const Vec3D& vecB, const Vec3D& vecC, double& dfA, double& dfB,
                           double& dfC, double& dfAlpha, double& dfBeta, double& dfGamma)
{
    const CellParameters cell = basisToCellParameters({vecA, vecB, vecC});
    dfA = cell.a;
    dfB = cell.b;
    dfC = cell.c;
    dfAlpha = cell.alpha;
    dfBeta = cell.beta;
    dfGamma = cell.gamma;
}

bool cellParametersFromList(const QList<Vec3D>& listCell, double& dfA, double& dfB, double& dfC,
                            double& dfAlpha, double& dfBeta, double& dfGamma)
{
    const std::optional<CellParameters> cell = cellParametersFromList(listCell);
    if (!cell) {
        return false;
    }
    dfA = cell->a;
    dfB = cell->b;
    dfC = cell->c;
    dfAlpha = cell->alpha;
    dfBeta = cell->beta;
    dfGamma = cell->gamma;
    return true;
}

}  // namespace tessera
