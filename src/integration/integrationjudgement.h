// Evaluation of an integration: scaling, Laue class, merging and space groups in one call.
#pragma once

#include "integration/integrationresult.h"
#include "lattice/latticeanalysis.h"
#include "records/runreport.h"

#include <QString>

#include <vector>

namespace tessera {

/// What judgeIntegration() does.
struct JudgementOptions {
    ScalingOptions scaling;
    double dfDMin = 0;     ///< resolution limit, Å; 0: that of the observations
    int nShells = 10;      ///< number of resolution shells
    double dfGoal = 0.9;   ///< completeness that the forecast aims at, 0 to 1
    QString strLaueClass;  ///< Laue class to use, such as "4/mmm"; empty: the proposed one
    int nSpaceGroup = 0;   ///< space group to use, 1 to 230, with its Laue class; 0: the first of the ranking
};

/// The lattice of the observations.
struct JudgedLattice {
    CellParameters cell;                ///< refined cell in force, to which the indices belong
    CellParameters cellErrors;          ///< standard errors; 0: not known
    std::vector<LatticeType> listType;  ///< LatticeAnalysis::listType; empty: types that fit the cell alone
};

/// Scales by frame means, proposes the Laue class, scales in that class, merges (without scaling, with
/// scaling, and after rejection), ranks the space groups and forecasts the completeness of a longer series.
///
/// If the lattice does not have a requested Laue class or space group, the report says so and the proposed
/// one is used. If nothing was measured, the result has the observations, the Laue class "-1" and figures
/// that are not finite, and the report has a warning.
/// @return the result; if the run was stopped, what had been found until then
IntegrationResult judgeIntegration(const IntegratedSeries& integrated, const SeriesGeometry& series,
                                   const JudgedLattice& lattice, const JudgementOptions& options,
                                   CRunReport& report);

/// Makes the Wilson plot of the merged intensities with the space group of the result, if it has one.
void takeWilsonPlot(IntegrationResult& result);

}  // namespace tessera
