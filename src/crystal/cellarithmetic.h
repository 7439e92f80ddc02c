// Cell arithmetic: reciprocal and direct basis, and the six cell parameters.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/cellparameters.h"
#include "records/vec3d.h"

#include <QList>

#include <optional>

namespace tessera {

/// a, b, c of a cell in Å, in the frame of the reciprocal basis that they are dual to.
struct DirectBasis {
    Vec3D a;
    Vec3D b;
    Vec3D c;
};

/// With d = a*·(b*×c*): a = (b*×c*)/d, b = (c*×a*)/d, c = (a*×b*)/d, all in single precision.
/// @return none if d is not finite or |d| at most 1e-6 of |a*|·|b*|·|c*|, as it is of co-planar vectors
std::optional<DirectBasis> reciprocalToDirectBasis(const ReciprocalBasis& basis);

/// Computed in single precision and widened. A vector of length 0 gives angles that are not numbers.
CellParameters basisToCellParameters(const DirectBasis& basis);

/// The direct cell of a reciprocal basis.
/// @return none if the vectors are co-planar
std::optional<CellParameters> cellParameters(const ReciprocalBasis& basis);

/// The direct cell of a list a*, b*, c* (Å⁻¹).
/// @return none unless the list holds 3 vectors that are not co-planar
std::optional<CellParameters> cellParametersFromList(const QList<Vec3D>& listCell);

/// The first of these functions for three vectors each; as the basis is dual, it serves both ways.
/// @return false, with the output untouched, where that one has no result
bool reciprocalToDirectBasis(const Vec3D& vecAStar, const Vec3D& vecBStar, const Vec3D& vecCStar, Vec3D& vecA,
                             Vec3D& vecB, Vec3D& vecC);

/// The six numbers one by one.
void basisToCellParameters(const Vec3D& vecA, const Vec3D& vecB, const Vec3D& vecC, double& dfA, double& dfB,
                           double& dfC, double& dfAlpha, double& dfBeta, double& dfGamma);

/// The six numbers one by one.
/// @return false, with the output untouched, without a cell
bool cellParametersFromList(const QList<Vec3D>& listCell, double& dfA, double& dfB, double& dfC,
                            double& dfAlpha, double& dfBeta, double& dfGamma);

}  // namespace tessera
