// Cell arithmetic: reciprocal and direct basis, and the six cell parameters.
#pragma once

#include "records/vec3d.h"

#include <QList>

namespace tessera {

/// The direct basis (Å) of a reciprocal one (Å⁻¹), or the other way: the basis is dual.
///
/// d = a*·(b*×c*) and a = (b*×c*)/d and so on, all in single precision.
/// @return false, with the output untouched, if d is not finite or |d| at most 1e-6 of |a*|·|b*|·|c*|, as it
///         is of co-planar vectors
bool reciprocalToDirectBasis(const Vec3D& vecAStar, const Vec3D& vecBStar, const Vec3D& vecCStar, Vec3D& vecA,
                             Vec3D& vecB, Vec3D& vecC);

/// Lengths in the unit of the vectors, angles in degrees: α between b and c, β between a and c, γ between
/// a and b. Computed in single precision and widened. A vector of length 0 gives angles that are not numbers.
void basisToCellParameters(const Vec3D& vecA, const Vec3D& vecB, const Vec3D& vecC, double& dfA, double& dfB,
                           double& dfC, double& dfAlpha, double& dfBeta, double& dfGamma);

/// The six parameters of the direct cell (Å, degrees) of a list a*, b*, c* (Å⁻¹).
/// @return false, with the output untouched, unless the list holds 3 vectors that are not co-planar
bool cellParametersFromList(const QList<Vec3D>& listCell, double& dfA, double& dfB, double& dfC,
                            double& dfAlpha, double& dfBeta, double& dfGamma);

}  // namespace tessera
