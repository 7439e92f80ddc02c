// Laue operations: what the symmetry of a diffraction pattern does to indices.
#pragma once

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// A matrix on a column of indices, row by row.
using IndexOperation = std::array<int, 9>;

/// All operations of a Laue class in its standard setting (unique axis b for 2/m, c for the tetragonal,
/// trigonal and hexagonal ones), those that reverse all indices included; the identity first.
/// @param strClass  "-1" to "m-3m", "-3m1" and "-31m"
/// @return empty for any other text
std::vector<IndexOperation> laueOperations(const QString& strClass);

}  // namespace tessera
