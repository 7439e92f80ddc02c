// Supercell: a crystal whose true cell holds several average ones along an axis.
#pragma once

#include "simulate/structurefactor.h"

namespace tessera {

/// The relation of the supercell to the cell of the average structure.
struct Supercell {
    int nMultiple = 1;      ///< average cells along the axis; 1 is the crystal as it is published
    int nAxis = 2;          ///< 0 to 2 for a, b, c
    double dfOddShare = 0;  ///< intensity of the superstructure reflections

    /// Whether a reflection of the supercell is one of the average structure.
    bool isOfAverage(const Reflection& reflection) const
    {
        return std::array<int, 3>{reflection.nH, reflection.nK, reflection.nL}[nAxis] % nMultiple == 0;
    }
};

/// The rows a*, b*, c* of the average cell with that of the axis divided by the multiple.
Matrix3 supercellBasis(const Matrix3& matAverage, const Supercell& supercell);

/// Primitive reciprocal basis of the supercell as rows of indices on it. What changes from cell to cell
/// leaves those centring translations that do not lead along the axis.
Matrix3 supercellPrimitive(const CStructureFactor& crystal, const Supercell& supercell);

/// All reflections with 0 < d* < dfMaxDStar, indices those of the supercell, ordered by them, and without
/// those below 1e-9 of the strongest. Those of the average structure have its intensity; those between have
/// the share of the mean of the two of the average structure that they lie between along the axis, 000 left
/// aside. This is no structure, but it keeps the fall with the angle, the symmetry along the axis and the
/// wanted share on average, where a modulation of all occupancies would give most of it to the few
/// reflections next to the direct beam.
std::vector<Reflection> supercellReflections(const CStructureFactor& crystal, const Supercell& supercell,
                                             double dfMaxDStar);

}  // namespace tessera
