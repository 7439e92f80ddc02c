// CUclsCell: the quadratic form of the reciprocal metric, the direct cell that follows from it, and its
// variances.
#pragma once

namespace tessera {

/// 1/d² = A·h² + B·k² + C·l² + D·h·k + E·k·l + F·h·l with the coefficients in Å⁻²: A = a*², B = b*², C = c*²,
/// D = 2·a*·b*·cos γ*, E = 2·b*·c*·cos α*, F = 2·a*·c*·cos β*. Of coefficients that no
/// cell has, edges and angles need not be finite.
class CUclsCell {
public:
    /// Takes the coefficients, Å⁻²; the covariance stays.
    void setCoefficients(double A, double B, double C, double D, double E, double F);
    /// Copies a 6×6 covariance matrix of A to F, row by row.
    void setCovariance(const double* pMatrix);

    // Edges and angles of the direct cell.
    double calA() const;      ///< a, Å
    double calB() const;      ///< b, Å
    double calC() const;      ///< c, Å
    double calAlpha() const;  ///< α, radians
    double calBeta() const;   ///< β, radians
    double calGamma() const;  ///< γ, radians

    // Variances of these by propagation of errors: gᵀ·M·g with the covariance M of the coefficients and the
    // exact partial derivatives g.
    double varA() const;      ///< Å²
    double varB() const;      ///< Å²
    double varC() const;      ///< Å²
    double varAlpha() const;  ///< radian²
    double varBeta() const;   ///< radian²
    double varGamma() const;  ///< radian²

    double m_dfCoef[6] = {0, 0, 0, 0, 0, 0};  ///< A, B, C, D, E, F, Å⁻²
    /// 4ABC − A·E² − B·F² − C·D² + D·E·F, Å⁻⁶: four times the squared volume of the reciprocal cell.
    double m_dfG = 0;
    double m_dfCovariance[36] = {};  ///< of A to F, row by row, Å⁻⁴
};

}  // namespace tessera
