// SymmetryOperation: the operations of a space group, closed from its generators.
#pragma once

#include "simulate/matrix3.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// x' = R x + t on fractional coordinates of the conventional cell.
struct SymmetryOperation {
    std::array<std::array<int, 3>, 3> matRotation{};
    std::array<int, 3> vecTranslation{};  ///< in 24ths of the cell edges, 0 to 23
    bool operator==(const SymmetryOperation& other) const
    {
        return matRotation == other.matRotation && vecTranslation == other.vecTranslation;
    }
};

/// Reads a triplet such as "-y,x-y,z+2/3". Denominators must divide 24.
/// @return false, with the operation as it was, when the text is no triplet
bool parseTriplet(const QString& strTriplet, SymmetryOperation& operation);

/// All operations modulo whole cell translations that the generators make, centring included,
/// the identity first. Empty when a triplet cannot be read.
std::vector<SymmetryOperation> closeGroup(const QStringList& listGenerator);

/// The image of a point, brought into 0 to 1.
Vector3 applyOperation(const SymmetryOperation& operation, const Vector3& vecFractional);

/// Basis of the reciprocal lattice that the centring translations of a group leave, as rows of
/// indices on the conventional reciprocal cell; the identity for a primitive cell.
Matrix3 primitiveIndexBasis(const std::vector<SymmetryOperation>& listOperation);

}  // namespace tessera
