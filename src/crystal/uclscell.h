// CUclsCell: the quadratic form of the reciprocal metric, its direct cell and the variances of that.
#pragma once

namespace tessera {

/// 1/d² = A·h² + B·k² + C·l² + D·h·k + E·k·l + F·h·l with the coefficients in Å⁻².
class CUclsCell {
public:
    /// Takes the coefficients, Å⁻²; the covariance stays.
    void setCoefficients(double A, double B, double C, double D, double E, double F);
    /// Copies a 6×6 covariance matrix of A to F, row by row.
    void setCovariance(const double* pMatrix);

    double calA() const;      ///< Å
    double calB() const;      ///< Å
    double calC() const;      ///< Å
    double calAlpha() const;  ///< radians
    double calBeta() const;   ///< radians
    double calGamma() const;  ///< radians

    // Variances by propagation of errors, gᵀ·M·g with the exact partial derivatives g.
    double varA() const;      ///< Å²
    double varB() const;      ///< Å²
    double varC() const;      ///< Å²
    double varAlpha() const;  ///< radian²
    double varBeta() const;   ///< radian²
    double varGamma() const;  ///< radian²

    double m_dfCoef[6] = {0, 0, 0, 0, 0, 0};
    double m_dfG = 0;  ///< 4ABC − A·E² − B·F² − C·D² + D·E·F
    double m_dfCovariance[36] = {};
};

}  // namespace tessera
