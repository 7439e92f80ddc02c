// Intensities: from a series with its geometry to merged intensities, in one call for road and window.
#pragma once

#include "dataset/dataset.h"
#include "integration/chemicalformula.h"
#include "integration/integrationfiles.h"
#include "integration/integrationjudgement.h"
#include "integration/integrationresult.h"
#include "lattice/latticeanalysis.h"
#include "records/runoutcome.h"
#include "records/runparameters.h"
#include "records/runreport.h"
#include "refinement/geometryrefinement.h"

#include <optional>

namespace tessera {

/// What a user may choose of it.
struct IntensityOptions {
    std::optional<RotationMode> rotation;  ///< none: that of the data set
    double dfDMin = 0;                     ///< Å; 0: as far as reflections are seen
    double dfDiscRadius = 0;               ///< pixels; 0: learned
    double dfRockingWidth = 0;             ///< Å⁻¹, sigma; 0: learned
    bool bProfileFit = true;
    bool bScale = true;                                 ///< a scale along the series
    bool bDecay = true;                                 ///< and a fall-off with resolution
    double dfRejection = ScalingOptions().dfRejection;  ///< sigmas, of outliers
    QString strLaueClass;                               ///< "4/mmm"; empty: the proposed one
    int nSpaceGroup = 0;                                ///< 1 to 230; 0: the best by its absences
    ChemicalFormula formula;
    int nUnits = 0;  ///< formulae in a cell; 0: estimated
};

/// The names of the Laue classes, of a hexagonal lattice with the way that its twofold axes lie.
const QStringList& laueClassNames();

/// Predicts, integrates, scales, merges and judges.
/// @param refined   the geometry, where it was refined; may be null: that of the data set
/// @param lattice   of the cell in force; may be null
/// @param result    replaced when the run finished, else as it was
RunOutcome findIntensities(const DataSet& dataSet, const MappingParameters& mapping,
                           const GeometryRefinement* refined, const LatticeAnalysis* lattice,
                           const IntensityOptions& options, int nJobs, CRunReport& report,
                           IntegrationResult& result);

/// Writes its files beside those of the project; see writeIntegrationFiles(). What got another name is told
/// to the report.
/// @param listTaken  files that must not be replaced
/// @return false with the reason and all files as they were
[[nodiscard]] bool writeIntensities(const DataSet& dataSet, const IntegrationResult& result,
                                    const IntensityOptions& options, const QStringList& listTaken,
                                    CRunReport& report, IntegrationFiles& files, QString* pstrReason);

}  // namespace tessera
