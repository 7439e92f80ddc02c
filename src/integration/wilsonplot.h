// Wilson plot: the decrease of intensity with resolution.
#pragma once

#include "integration/mergingquality.h"

#include <array>
#include <vector>

namespace tessera {

/// The points of the plot and the slope of the line through them.
struct WilsonPlot {
    std::vector<std::array<double, 2>> listPoint;  ///< {(sin θ/λ)² in Å⁻², ln (mean I / f²)}
    double dfB = 0;                                ///< Å²; not finite if no line can be fitted
};

/// The mean of f_e², Å², over neutral carbon, oxygen and silicon. It stands for the average atom of a crystal
/// of unknown formula: only the shape of the curve matters, which differs little between elements. Source:
/// International Tables for Crystallography, Vol. C, table 4.3.2.2, as gemmi has it.
/// @param dfSquare  (sin θ/λ)², Å⁻²
double meanSquareScattering(double dfSquare);

/// Computes ln (mean of I / epsilon over f²) in shells of about 60 reflections, at least five shells from 100
/// reflections on. The line is fitted to the shells beyond 3 Å, where interatomic distances no longer shape
/// the plot, or to all shells if there are fewer than four of these; its slope is -2B. Source: Wilson (1942),
/// Nature 150, 151–152.
/// @param pGroup  the space group's operations in the setting of the symmetry: its point group gives epsilon,
///                and its absent reflections are left out. Null: it is not known. Then epsilon counts the
///                rotations of the Laue class alone, as most crystals have no mirror planes: the absences by
///                a glide plane take from the mean of its zone what they would add.
WilsonPlot wilsonPlot(const std::vector<MergedReflection>& listMerged, const ObservationSymmetry& symmetry,
                      const CellParameters& cell, const gemmi::GroupOps* pGroup = nullptr);

}  // namespace tessera
