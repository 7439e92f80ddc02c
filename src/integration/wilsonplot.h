// Wilson plot: the fall-off of intensity with resolution.
#pragma once

#include "integration/mergingquality.h"

#include <array>
#include <vector>

namespace tessera {

struct WilsonPlot {
    std::vector<std::array<double, 2>> listPoint;  ///< (sin θ/λ)², Å⁻²; ln (mean I / f²)
    double dfB = 0;                                ///< Å²; not finite where no line fits
};

/// The mean of f_e², Å², over carbon, oxygen and silicon as neutral atoms, which stands for the average atom
/// of a crystal whose formula nobody gave: the shape of the curve matters alone, and it differs little.
/// Source: International Tables for Crystallography, Vol. C, table 4.3.2.2, as gemmi has it.
/// @param dfSquare  (sin θ/λ)², Å⁻²
double meanSquareScattering(double dfSquare);

/// ln (mean of I / epsilon over f²) in shells of about 60 reflections, five at least where there are 100
/// reflections. The line goes through the shells beyond 3 Å, where neighbouring atoms no longer bend the
/// plot, or through all where these are fewer than four; -2B is its slope. Source: Wilson (1942), Nature 150,
/// 151–152.
WilsonPlot wilsonPlot(const std::vector<MergedReflection>& listMerged, const ObservationSymmetry& symmetry,
                      const CellParameters& cell);

}  // namespace tessera
