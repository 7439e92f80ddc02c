// Judgement of an integration: scaling, Laue class, merging and space groups in one call.
#pragma once

#include "integration/integrationresult.h"
#include "lattice/latticeanalysis.h"
#include "records/runreport.h"

#include <QString>

#include <vector>

namespace tessera {

struct JudgementOptions {
    ScalingOptions scaling;
    double dfDMin = 0;     ///< Å, resolution limit; 0: that of the observations
    int nShells = 10;      ///< of resolution
    double dfGoal = 0.9;   ///< completeness that the forecast aims at, 0 to 1
    QString strLaueClass;  ///< "4/mmm", in place of the proposed one; empty: the proposed one
    int nSpaceGroup = 0;   ///< 1 to 230, whose Laue class is taken and which comes first; 0: as ranked
};

/// What is known of the lattice.
struct JudgedLattice {
    CellParameters cell;                ///< in force, refined: observations have its indices
    CellParameters cellErrors;          ///< standard errors; 0: not known
    std::vector<LatticeType> listType;  ///< LatticeAnalysis::listType of it; empty: those of the cell alone
};

/// Scales by the means of the frames, proposes the Laue class, scales in that class, merges (unscaled,
/// scaled, after rejection), ranks the space groups and foretells the completeness of a longer series.
///
/// A Laue class or space group that was asked for and that the lattice does not have is told to the report,
/// and the proposed one is taken. Where nothing was measured the result has the observations, the Laue class
/// "-1" and numbers that are not finite; the report has a warning.
/// @return the result; of a run that was asked to stop what it had found until then
IntegrationResult judgeIntegration(const IntegratedSeries& integrated, const SeriesGeometry& series,
                                   const JudgedLattice& lattice, const JudgementOptions& options,
                                   CRunReport& report);

}  // namespace tessera
