// Intensities: integration, scaling and merging of a series in one call, for the road and the window.
#pragma once

#include "dataset/dataset.h"
#include "integration/chemicalformula.h"
#include "integration/integrationfiles.h"
#include "integration/integrationjudgement.h"
#include "integration/integrationresult.h"
#include "lattice/latticeanalysis.h"
#include "records/runparameters.h"
#include "records/runreport.h"
#include "records/runresult.h"
#include "refinement/geometryrefinement.h"

#include <optional>

namespace tessera {

/// What the user can choose.
struct IntensityOptions {
    std::optional<RotationMode> rotation;               ///< none: that of the data set
    double dfDMin = 0;                                  ///< Å; 0: as far as reflections are observed
    double dfDiscRadius = 0;                            ///< pixels; 0: learned
    double dfRockingWidth = 0;                          ///< sigma, Å⁻¹; 0: learned
    bool bProfileFit = true;                            ///< use profile fitting for weak reflections
    bool bScale = true;                                 ///< fit a scale along the series
    bool bDecay = true;                                 ///< fit a decay with resolution along the series
    double dfRejection = ScalingOptions().dfRejection;  ///< deviation of outliers, sigmas
    QString strLaueClass;                               ///< "4/mmm"; empty: the proposed one
    int nSpaceGroup = 0;                                ///< 1 to 230; 0: the best one by its absences
    ChemicalFormula formula;                            ///< empty: not known
    int nUnits = 0;                                     ///< formula units in a cell; 0: estimated
};

/// The names of the Laue classes; "-3m1" and "-31m" are distinguished for hexagonal lattices.
const QStringList& laueClassNames();

/// Predicts, integrates, scales and merges the reflections of a series, and judges the result.
/// @param refined   refined geometry; null: that of the data set
/// @param lattice   analysis of the lattice of the cell in force; may be null
RunResult<IntegrationResult> findIntensities(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined,
                                             const LatticeAnalysis* lattice, const IntensityOptions& options,
                                             int nJobs, CRunReport& report);

/// Writes the result files, see writeIntegrationFiles(). The report mentions files that got another name.
/// @param listTaken  files that must not be replaced
/// @return what was written; nothing, with the reason and all files as they were, if a file cannot be written
[[nodiscard]] std::optional<IntegrationFiles> writeIntensities(const DataSet& dataSet,
                                                               const IntegrationResult& result,
                                                               const IntensityOptions& options,
                                                               const QStringList& listTaken,
                                                               CRunReport& report, QString* pstrReason);

}  // namespace tessera
