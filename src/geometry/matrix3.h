// CMatrix3: a 3×3 matrix in double precision, applied to single-precision vectors.
#pragma once

#include "records/vec3d.h"

namespace tessera {

/// Nine doubles, row by row.
///
/// setRow() and getRow() count rows from 1, setColumn() and getColumn() count columns from 0. Callers rely on
/// both.
class CMatrix3 {
public:
    double m_dfElement[9];

    /// Leaves the elements uninitialized.
    CMatrix3() {}
    /// The matrix with the given elements, row by row.
    CMatrix3(double df11, double df12, double df13, double df21, double df22, double df23, double df31,
             double df32, double df33)
        : m_dfElement{df11, df12, df13, df21, df22, df23, df31, df32, df33}
    {}

    /// The unit matrix.
    static CMatrix3 identity() { return {1, 0, 0, 0, 1, 0, 0, 0, 1}; }

    /// Element in row `nRow` and column `nColumn`, both from 0 to 2 (not tested).
    double& at(int nRow, int nColumn) { return m_dfElement[3 * nRow + nColumn]; }
    /// The same for a constant matrix.
    const double& at(int nRow, int nColumn) const { return m_dfElement[3 * nRow + nColumn]; }

    /// Sets row `nRow`, 1, 2 or 3; any other number does nothing.
    void setRow(int nRow, const Vec3D& v)
    {
        if (nRow < 1 || nRow > 3) {
            return;
        }
        double* pRow = &at(nRow - 1, 0);
        pRow[0] = double(v.x);
        pRow[1] = double(v.y);
        pRow[2] = double(v.z);
    }
    /// Row `nRow`, 1, 2 or 3, rounded to single precision; (0, 0, 0) for any other number.
    Vec3D getRow(int nRow) const
    {
        if (nRow < 1 || nRow > 3) {
            return {};
        }
        const double* pRow = &at(nRow - 1, 0);
        return {float(pRow[0]), float(pRow[1]), float(pRow[2])};
    }
    /// Sets column `nColumn`, 0, 1 or 2; any other number does nothing.
    void setColumn(int nColumn, const Vec3D& v)
    {
        if (nColumn < 0 || nColumn > 2) {
            return;
        }
        m_dfElement[nColumn] = double(v.x);
        m_dfElement[nColumn + 3] = double(v.y);
        m_dfElement[nColumn + 6] = double(v.z);
    }
    /// Column `nColumn`, 0, 1 or 2, rounded to single precision; (0, 0, 0) for any other number.
    Vec3D getColumn(int nColumn) const
    {
        if (nColumn < 0 || nColumn > 2) {
            return {};
        }
        return {float(m_dfElement[nColumn]), float(m_dfElement[nColumn + 3]),
                float(m_dfElement[nColumn + 6])};
    }

    /// Determinant.
    double determinant() const
    {
        const double* p = m_dfElement;
        return p[0] * (p[4] * p[8] - p[5] * p[7]) - p[1] * (p[3] * p[8] - p[5] * p[6]) +
               p[2] * (p[3] * p[7] - p[4] * p[6]);
    }
    /// Whether the signed determinant is above 1e-7. So a matrix that changes the handedness does not count
    /// as regular, although it has an inverse.
    bool isRegular() const { return determinant() > 1e-7; }

    /// The transposed matrix.
    CMatrix3 transposed() const
    {
        const double* p = m_dfElement;
        return {p[0], p[3], p[6], p[1], p[4], p[7], p[2], p[5], p[8]};
    }
    /// Each element times a factor.
    CMatrix3 scaled(double dfFactor) const
    {
        CMatrix3 result;
        for (int n = 0; n < 9; ++n) {
            result.m_dfElement[n] = m_dfElement[n] * dfFactor;
        }
        return result;
    }
    /// The inverse: the adjugate times 1/determinant. A singular matrix gives elements that are not finite.
    CMatrix3 inverted() const
    {
        const double* p = m_dfElement;
        const CMatrix3 adjugate(
            p[4] * p[8] - p[5] * p[7], p[2] * p[7] - p[1] * p[8], p[1] * p[5] - p[2] * p[4],
            p[5] * p[6] - p[3] * p[8], p[0] * p[8] - p[2] * p[6], p[2] * p[3] - p[0] * p[5],
            p[3] * p[7] - p[4] * p[6], p[1] * p[6] - p[0] * p[7], p[0] * p[4] - p[1] * p[3]);
        return adjugate.scaled(1.0 / determinant());
    }
    /// This matrix times `other`.
    CMatrix3 multiplied(const CMatrix3& other) const
    {
        CMatrix3 result;
        for (int nRow = 0; nRow < 3; ++nRow) {
            for (int nColumn = 0; nColumn < 3; ++nColumn) {
                result.at(nRow, nColumn) = at(nRow, 0) * other.at(0, nColumn) +
                                           at(nRow, 1) * other.at(1, nColumn) +
                                           at(nRow, 2) * other.at(2, nColumn);
            }
        }
        return result;
    }
    /// This matrix times the column `v`. The sums are formed in double precision and then rounded to single
    /// precision.
    Vec3D multiplied(const Vec3D& v) const
    {
        const double* p = m_dfElement;
        const double dfX = double(v.x), dfY = double(v.y), dfZ = double(v.z);
        return {float(p[0] * dfX + p[1] * dfY + p[2] * dfZ), float(p[3] * dfX + p[4] * dfY + p[5] * dfZ),
                float(p[6] * dfX + p[7] * dfY + p[8] * dfZ)};
    }
};

}  // namespace tessera
