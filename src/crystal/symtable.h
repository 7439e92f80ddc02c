// CSymTable: the point parts and translations that the letters of explicit symbols stand for.
#pragma once

#include "crystal/symop.h"

#include <array>
#include <vector>

namespace tessera {

/// The point parts (letters a to n) and translations (letters A to K) of the explicit symbols.
///
/// Source: Shmueli, International Tables for Crystallography, Vol. B, Table A1.4.2.1.
class CSymTable {
public:
    /// Fills both tables.
    CSymTable();

    /// The operation with point part `nPoint` (0 to 13) and translation components of the indices
    /// `nX`, `nY`, `nZ` (0 to 10).
    /// @throws std::out_of_range "Point symmetry index out of range!", which is tested first, or
    ///         "Translation vector index out of range!"
    CSymOp operation(int nPoint, int nX, int nY, int nZ) const;

    std::vector<std::array<double, 9>> vecPoint;  ///< 14 rotations
    std::vector<double> vecTranslation;           ///< 11 numbers
};

}  // namespace tessera
