// Unit cell refinement from d*: the quadratic form of the reciprocal metric, fitted by least squares.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// What a refinement found beside the six parameters. Arrays of cells go a, b, c (Å), α, β, γ (degrees);
/// coefficients go A to F (Å⁻²).
struct CellRefinement {
    int nInfo = 0;  ///< result of the fit; 0 if none took place
    double dfCell[6] = {};
    double dfCellStdErr[6] = {};
    double dfCoefficient[6] = {};
    double dfCoefficientStdErr[6] = {};
    double dfRmsBefore[2] = {};  ///< root mean square of the d* errors (Å⁻¹), sum of their sizes/Σd*
    double dfRmsAfter[2] = {};
};

/// Refines a cell (Å, degrees) against dfH, dfK, dfL (not rounded) and dfDStar of the reflections, all of
/// equal weight in d*². Start values and results go to the log.
///
/// The fit has no orientation and knows no constraints of a crystal system.
///
/// @param pResult  if given, takes what was found; untouched when fewer than 6 reflections are there
/// @return false, with the six parameters as they came, for fewer than 6 reflections (a red line) and
///         for a fit whose form has no direct cell (a red line too). Coefficients that the reflections leave
///         open are named in red; their e.s.d. show 0
/// Source: Kelsey (1964), Mineral. Mag. 33, 809.
bool unitCellRefinement(const QList<Peak3D>& listPeak, double& a, double& b, double& c, double& alpha,
                        double& beta, double& gamma, CRunReport& report, CellRefinement* pResult = nullptr);

}  // namespace tessera
