// Symmetry operations: those of a space group, closed from its generators.
#pragma once

#include "simulate/matrix3.h"

#include <QStringList>

#include <gemmi/symmetry.hpp>

#include <vector>

namespace tessera {

/// All operations modulo whole cell translations that the generators make, centring included,
/// the identity first. Empty when a triplet such as "-y,x-y,z+2/3" cannot be read.
std::vector<gemmi::Op> closeGroup(const QStringList& listGenerator);

/// The image of a point in fractional coordinates of the conventional cell, brought into 0 to 1.
Vector3 applyOperation(const gemmi::Op& operation, const Vector3& vecFractional);

/// Basis of the reciprocal lattice that the centring translations of a group leave, as rows of
/// indices on the conventional reciprocal cell; the identity for a primitive cell.
Matrix3 primitiveIndexBasis(const std::vector<gemmi::Op>& listOperation);

}  // namespace tessera
