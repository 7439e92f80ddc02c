// Unit cell refinement from d*: the quadratic form of the reciprocal metric, fitted by least squares.
#pragma once

#include "records/cellparameters.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

#include <optional>

namespace tessera {

/// What a refinement found. Coefficients go A to F (Å⁻²).
struct CellRefinement {
    int nInfo = 0;              ///< result of the fit
    CellParameters cell;        ///< the refined cell
    CellParameters cellStdErr;  ///< its standard errors
    double dfCoefficient[6] = {};
    double dfCoefficientStdErr[6] = {};
    double dfRmsBefore[2] = {};  ///< root mean square of the d* errors (Å⁻¹), sum of their sizes/Σd*
    double dfRmsAfter[2] = {};
};

/// Refines a cell against dfH, dfK, dfL (not rounded) and dfDStar of the reflections, all of
/// equal weight in d*². Start values and results go to the log.
///
/// The fit has no orientation and knows no constraints of a crystal system.
///
/// @return none for fewer than 6 reflections (a red line) and for a fit whose form has no direct cell (a red
///         line too). Coefficients that the reflections leave open are named in red; their e.s.d. show 0
/// Source: Kelsey (1964), Mineral. Mag. 33, 809.
std::optional<CellRefinement> unitCellRefinement(const QList<Peak3D>& listPeak,
                                                 const CellParameters& cellStart, CRunReport& report);

/// The same for the six numbers one by one.
/// @return false, with the six numbers as they came, without a result
bool unitCellRefinement(const QList<Peak3D>& listPeak, double& a, double& b, double& c, double& alpha,
                        double& beta, double& gamma, CRunReport& report);

}  // namespace tessera
