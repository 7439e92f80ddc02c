// CStructureFactor: kinematical structure factors of a crystal.
#pragma once

#include "simulate/crystalstructures.h"
#include "simulate/matrix3.h"
#include "simulate/symmetryoperations.h"

#include <complex>
#include <vector>

namespace tessera {

/// Reciprocal basis a*, b*, c* (rows, Å⁻¹) of a cell in a Cartesian frame with a* along x and
/// b* in the x-y plane.
Matrix3 reciprocalBasisOfCell(const std::array<double, 6>& adfCell);

/// The six cell parameters (Å, degrees) of a reciprocal basis.
std::array<double, 6> cellOfReciprocalBasis(const Matrix3& matBasis);

/// A reflection with its kinematical strength.
struct Reflection {
    int nH = 0, nK = 0, nL = 0;
    double dfDStar = 0;    ///< Å⁻¹
    double dfSquareF = 0;  ///< Å²
};

/// The atoms of one cell, and what they scatter.
class CStructureFactor {
public:
    /// @param dfDisplacement  isotropic B of all atoms, Å²
    explicit CStructureFactor(const CrystalStructure& structure, double dfDisplacement = 0.5);

    /// F in Å: the sum over the atoms of f_e(s) exp(-B s²) exp(2 pi i (hx + ky + lz)).
    std::complex<double> value(int nH, int nK, int nL) const;

    /// All reflections with 0 < d* < dfMaxDStar whose intensity is not zero by symmetry or by
    /// chance (below 1e-9 of the strongest), ordered by h, k, l.
    std::vector<Reflection> reflections(double dfMaxDStar) const;

    int atomCount() const;
    int operationCount() const { return int(m_listOperation.size()); }
    const std::vector<gemmi::Op>& operations() const { return m_listOperation; }
    const Matrix3& reciprocalBasis() const { return m_matBasis; }
    /// Rows of indices: the primitive reciprocal basis that the centring leaves.
    Matrix3 primitiveBasis() const { return primitiveIndexBasis(m_listOperation); }

private:
    struct Element {
        QString strElement;
        std::vector<Vector3> listPosition;
    };
    std::vector<Element> m_listElement;
    std::vector<gemmi::Op> m_listOperation;
    Matrix3 m_matBasis;
    double m_dfDisplacement;
};

}  // namespace tessera
