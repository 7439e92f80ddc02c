// electronScatteringFactor: elastic electron scattering factors of neutral atoms.
#pragma once

#include <QString>

namespace tessera {

/// Scattering factor in Å at s = sin(theta)/lambda in Å⁻¹, for electrons at rest mass; good to
/// s = 2 Å⁻¹. NaN for an element without an entry.
/// Source: five Gaussians of Peng, Ren, Dudarev & Whelan (1996), Acta Cryst. A52, 257, as in
/// International Tables C, table 4.3.2.2, of which gemmi has the numbers.
double electronScatteringFactor(const QString& strElement, double dfS);

}  // namespace tessera
