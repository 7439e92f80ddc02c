// Laue operations: the symmetry operations of Laue classes on indices.
#pragma once

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// A matrix that acts on a column of indices, stored row by row.
using IndexOperation = std::array<int, 9>;

/// All operations of a Laue class in its standard setting (unique axis b for 2/m, c for tetragonal, trigonal
/// and hexagonal classes), including those with the inversion; the identity first.
/// @param strClass  "-1" to "m-3m", "-3m1" and "-31m"
/// @return empty for an unknown class
std::vector<IndexOperation> laueOperations(const QString& strClass);

}  // namespace tessera
