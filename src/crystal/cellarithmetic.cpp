#include "crystal/cellarithmetic.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr double g_dfDegreesPerRadian = 180.0 / 3.141592653589793;
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

bool reciprocalToDirectBasis(const Vec3D& vecAStar, const Vec3D& vecBStar, const Vec3D& vecCStar, Vec3D& vecA,
                             Vec3D& vecB, Vec3D& vecC)
{
    const Vec3D vecBC = cross(vecBStar, vecCStar);
    const Vec3D vecCA = cross(vecCStar, vecAStar);
    const Vec3D vecAB = cross(vecAStar, vecBStar);
    const float fVolume = dot(vecAStar, vecBC);
    // Rounding leaves something of the volume of co-planar vectors: up to some 1e-7 of that of a box.
    const double dfBox = double(length(vecAStar)) * double(length(vecBStar)) * double(length(vecCStar));
    if (!std::isfinite(fVolume) || !(std::fabs(double(fVolume)) > g_dfCoPlanar * dfBox))
        return false;
    vecA = divided(vecBC, fVolume);
    vecB = divided(vecCA, fVolume);
    vecC = divided(vecAB, fVolume);
    return true;
}

void basisToCellParameters(const Vec3D& vecA, const Vec3D& vecB, const Vec3D& vecC, double& dfA, double& dfB,
                           double& dfC, double& dfAlpha, double& dfBeta, double& dfGamma)
{
    const float fA = length(vecA), fB = length(vecB), fC = length(vecC);
    dfA = double(fA);
    dfB = double(fB);
    dfC = double(fC);
    dfAlpha = angleDegrees(vecB, vecC, fB, fC);
    dfBeta = angleDegrees(vecA, vecC, fA, fC);
    dfGamma = angleDegrees(vecA, vecB, fA, fB);
}

bool cellParametersFromList(const QList<Vec3D>& listCell, double& dfA, double& dfB, double& dfC,
                            double& dfAlpha, double& dfBeta, double& dfGamma)
{
    if (listCell.size() != 3)
        return false;
    Vec3D vecA, vecB, vecC;
    if (!reciprocalToDirectBasis(listCell[0], listCell[1], listCell[2], vecA, vecB, vecC))
        return false;
    basisToCellParameters(vecA, vecB, vecC, dfA, dfB, dfC, dfAlpha, dfBeta, dfGamma);
    return true;
}

}  // namespace tessera
