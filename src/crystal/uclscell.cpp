#include "crystal/uclscell.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tessera {

namespace {

using Gradient = std::array<double, 6>;  // partial derivatives by A, B, C, D, E, F

// The value of a polynomial of the six coefficients, with its exact derivatives.
struct Form {
    double dfValue;
    Gradient gradient;
};

// The polynomials that the direct cell is made of: a² = BC/G, and cos α = Alpha/√(AB·AC), as
// cos α = (cos β*·cos γ* − cos α*)/(sin β*·sin γ*). The polynomials are
// multiplied by 4 throughout, which cancels.
struct Forms {
    explicit Forms(const double* pCoef)
    {
        const double A = pCoef[0], B = pCoef[1], C = pCoef[2], D = pCoef[3], E = pCoef[4], F = pCoef[5];
        formBC = {4 * B * C - E * E, {0, 4 * C, 4 * B, 0, -2 * E, 0}};
        formAC = {4 * A * C - F * F, {4 * C, 0, 4 * A, 0, 0, -2 * F}};
        formAB = {4 * A * B - D * D, {4 * B, 4 * A, 0, -2 * D, 0, 0}};
        formG = {4 * A * B * C - A * E * E - B * F * F - C * D * D + D * E * F,
                 {4 * B * C - E * E, 4 * A * C - F * F, 4 * A * B - D * D, E * F - 2 * C * D,
                  D * F - 2 * A * E, D * E - 2 * B * F}};
        formAlpha = {D * F - 2 * A * E, {-2 * E, 0, 0, F, -2 * A, D}};
        formBeta = {D * E - 2 * B * F, {0, -2 * F, 0, E, D, -2 * B}};
        formGamma = {E * F - 2 * C * D, {0, 0, -2 * D, -2 * C, F, E}};
    }

    Form formBC, formAC, formAB;          // numerators of a², b², c²
    Form formG;                           // their common denominator
    Form formAlpha, formBeta, formGamma;  // numerators of the cosines
};

double lengthOf(const Form& numerator, const Form& denominator)
{
    return std::sqrt(numerator.dfValue / denominator.dfValue);
}

// The angle whose cosine is numerator/√(first·second), radians.
double angleOf(const Form& numerator, const Form& first, const Form& second)
{
    return std::acos(numerator.dfValue / std::sqrt(first.dfValue * second.dfValue));
}

// The derivatives of lengthOf(). x = √(N/G): dx = (G·dN − N·dG) / (2·x·G²)
Gradient lengthGradient(const Form& numerator, const Form& denominator)
{
    const double dfN = numerator.dfValue, dfG = denominator.dfValue;
    const double dfScale = 1 / (2 * lengthOf(numerator, denominator) * dfG * dfG);
    Gradient gradient;
    for (std::size_t n = 0; n < 6; ++n) {
        gradient[n] = dfScale * (dfG * numerator.gradient[n] - dfN * denominator.gradient[n]);
    }
    return gradient;
}

// The derivatives of angleOf(). x = acos(P/√(Q·R)): dx = −(dP − P·(R·dQ + Q·dR)/(2·Q·R)) / √(Q·R − P²)
Gradient angleGradient(const Form& numerator, const Form& first, const Form& second)
{
    const double dfP = numerator.dfValue, dfQ = first.dfValue, dfR = second.dfValue;
    const double dfScale = -1 / std::sqrt(dfQ * dfR - dfP * dfP);
    Gradient gradient;
    for (std::size_t n = 0; n < 6; ++n) {
        gradient[n] = dfScale *
                      (numerator.gradient[n] -
                       dfP * (dfR * first.gradient[n] + dfQ * second.gradient[n]) / (2 * dfQ * dfR));
    }
    return gradient;
}

// The variance of a quantity with these derivatives: gᵀ·M·g.
double propagated(const Gradient& gradient, const double* pCovariance)
{
    double dfSum = 0;
    for (std::size_t i = 0; i < 6; ++i) {
        for (std::size_t j = 0; j < 6; ++j) {
            dfSum += gradient[i] * pCovariance[6 * i + j] * gradient[j];
        }
    }
    return dfSum;
}

}  // namespace

void CUclsCell::setCoefficients(double A, double B, double C, double D, double E, double F)
{
    const double aCoef[6] = {A, B, C, D, E, F};
    std::copy(aCoef, aCoef + 6, m_dfCoef);
    m_dfG = Forms(m_dfCoef).formG.dfValue;
}

void CUclsCell::setCovariance(const double* pMatrix)
{
    std::copy(pMatrix, pMatrix + 36, m_dfCovariance);
}

double CUclsCell::calA() const
{
    const Forms f(m_dfCoef);
    return lengthOf(f.formBC, f.formG);
}

double CUclsCell::calB() const
{
    const Forms f(m_dfCoef);
    return lengthOf(f.formAC, f.formG);
}

double CUclsCell::calC() const
{
    const Forms f(m_dfCoef);
    return lengthOf(f.formAB, f.formG);
}

double CUclsCell::calAlpha() const
{
    const Forms f(m_dfCoef);
    return angleOf(f.formAlpha, f.formAB, f.formAC);
}

double CUclsCell::calBeta() const
{
    const Forms f(m_dfCoef);
    return angleOf(f.formBeta, f.formBC, f.formAB);
}

double CUclsCell::calGamma() const
{
    const Forms f(m_dfCoef);
    return angleOf(f.formGamma, f.formBC, f.formAC);
}

double CUclsCell::varA() const
{
    const Forms f(m_dfCoef);
    return propagated(lengthGradient(f.formBC, f.formG), m_dfCovariance);
}

double CUclsCell::varB() const
{
    const Forms f(m_dfCoef);
    return propagated(lengthGradient(f.formAC, f.formG), m_dfCovariance);
}

double CUclsCell::varC() const
{
    const Forms f(m_dfCoef);
    return propagated(lengthGradient(f.formAB, f.formG), m_dfCovariance);
}

double CUclsCell::varAlpha() const
{
    const Forms f(m_dfCoef);
    return propagated(angleGradient(f.formAlpha, f.formAB, f.formAC), m_dfCovariance);
}

double CUclsCell::varBeta() const
{
    const Forms f(m_dfCoef);
    return propagated(angleGradient(f.formBeta, f.formBC, f.formAB), m_dfCovariance);
}

double CUclsCell::varGamma() const
{
    const Forms f(m_dfCoef);
    return propagated(angleGradient(f.formGamma, f.formBC, f.formAC), m_dfCovariance);
}

}  // namespace tessera
