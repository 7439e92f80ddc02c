// CSymOp: one symmetry operation of a space group.
#pragma once

namespace tessera {

/// One symmetry operation x' = R·x + t as a 4×4 affine matrix, in fractional coordinates of the
/// standard setting; rhombohedral groups stand on hexagonal axes.
struct CSymOp {
    double dfRotation[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};  ///< point part R, row by row
    double dfBottom[3] = {0, 0, 0};                      ///< always 0
    double dfOne = 1;                                    ///< always 1
    double dfTranslation[3] = {0, 0, 0};                 ///< t, fractions of the cell
};

/// The product first·second with its translation brought into [0, 1).
CSymOp multiplied(const CSymOp& first, const CSymOp& second);

}  // namespace tessera
