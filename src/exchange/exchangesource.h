// ExchangeSource: the data of a series for the exports to other programs.
#pragma once

#include "dataset/dataset.h"
#include "integration/integrationresult.h"
#include "records/runparameters.h"
#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

/// A series with its geometry, and where its files are written.
struct ExchangeSource {
    const DataSet* pData = nullptr;                   ///< the series
    QString strFolder;                                ///< folder of all files
    SeriesGeometry series;                            ///< geometry of the series
    bool bCell = false;                               ///< the basis of the series is a cell
    const IntegrationResult* pIntegration = nullptr;  ///< null: there are no integrated intensities
    /// The direct beam of each frame by the data set alone, to which its peaks are relative, raw pixels.
    std::vector<FramePlace> listBeam;

    QStringList* pWritten = nullptr;  ///< takes the paths of all files except the frames; may be null

    /// A file with the name of the series and an ending such as ".expt".
    QString file(const QString& strEnding) const
    {
        return strFolder + QLatin1Char('/') + pData->m_strProjectName + strEnding;
    }
};

/// Makes the source of a data set with the geometry of the integration, or else with the refined one, or
/// else with that of the data set. A series without a cell has all other numbers. The folder is that of the
/// project.
/// @param dataSet      must outlive the source
/// @param refined      may be null
/// @param integration  may be null; must outlive the source
/// @return nothing without frames, or without tilts and shifts for all of them
std::optional<ExchangeSource> exchangeSource(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined,
                                             const IntegrationResult* integration);

}  // namespace tessera
