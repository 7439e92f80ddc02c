// Electron scattering factors in the parametrization of SHELX.
#pragma once

#include <gemmi/elem.hpp>

#include <array>

namespace tessera {

/// f(s) = a1 exp(-b1 s²) + … + a4 exp(-b4 s²) + c, s = sin θ / λ.
struct FourGaussians {
    std::array<double, 4> a = {};  ///< Å
    std::array<double, 4> b = {};  ///< Å²
    double c = 0;                  ///< Å
    double dfWorst = 0;            ///< Å, greatest deviation from the tabulated five Gaussians

    /// The scattering factor at s (Å⁻¹), Å.
    double value(double dfS) const;
};

/// Upper limit of s in the fit of the four Gaussians, Å⁻¹; it corresponds to a resolution of 0.42 Å.
constexpr double g_dfMostSineOverLambda = 1.2;

/// The tabulated factor, Å, of a neutral atom at s, Å⁻¹: five Gaussians of International Tables C, table
/// 4.3.2.2 (Peng, Ren, Dudarev & Whelan (1996), Acta Cryst. A52, 257).
double electronScattering(gemmi::El element, double dfS);

/// Fits four Gaussians and a constant to the tabulated five, by least squares at steps of 0.02 Å⁻¹ up to
/// g_dfMostSineOverLambda. The element must have an entry in the table.
FourGaussians fourGaussians(gemmi::El element);

}  // namespace tessera
