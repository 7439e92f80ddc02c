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
    QString strFolder;  ///< where all files go
    SeriesGeometry series;
    bool bCell = false;                               ///< the basis of the series is a cell
    const IntegrationResult* pIntegration = nullptr;  ///< null: nothing is integrated
    /// Direct beam of each frame by the data set alone, which its peaks are relative to, raw pixels.
    std::vector<FramePlace> listBeam;

    QStringList* pWritten = nullptr;  ///< lent; gets the paths of all files but the frames; may be null

    /// The file of the series' name with an ending, such as ".expt".
    QString file(const QString& strEnding) const
    {
        return strFolder + QLatin1Char('/') + pData->m_strProjectName + strEnding;
    }
};

/// The geometry that the intensities are of; without any, the refined one; else that of the data set. A
/// series without a cell has all but the cell. The folder is that of the project.
/// @param dataSet      lent; must outlive the source
/// @param refined      may be null
/// @param integration  may be null; lent
/// @return none without frames, or tilts and shifts for all of them
std::optional<ExchangeSource> exchangeSource(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined,
                                             const IntegrationResult* integration);

}  // namespace tessera
