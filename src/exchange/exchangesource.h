// ExchangeSource: what a series has to give to other programs.
#pragma once

#include "dataset/dataset.h"
#include "integration/integrationresult.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

struct ExchangeSource {
    const DataSet* pData = nullptr;
    SeriesGeometry series;
    bool bCell = false;                               ///< the basis of the series is a cell
    const IntegrationResult* pIntegration = nullptr;  ///< null: nothing is integrated
    /// Direct beam of each frame by the data set alone, which its peaks are relative to, raw pixels.
    std::vector<FramePlace> listBeam;
};

/// The geometry that the intensities are of; without any, the refined one; else that of the data set. A
/// series without a cell has all but the cell.
/// @param dataSet      lent; must outlive the source
/// @param refined      may be null
/// @param integration  may be null; lent
/// @return none without frames, or tilts and shifts for all of them
std::optional<ExchangeSource> exchangeSource(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined,
                                             const IntegrationResult* integration);

}  // namespace tessera
