// Exports for other programs: what the driver and the window make of a series with all that was found of it.
#pragma once

#include "dataset/dataset.h"
#include "exchange/virtualframes.h"
#include "integration/integrationresult.h"
#include "records/runparameters.h"
#include "records/runreport.h"
#include "refinement/geometryrefinement.h"
#include "road/exportkind.h"

namespace tessera {

/// What was found of a series beside its data set, null where nothing was, and where it is to go.
struct FoundOfSeries {
    const GeometryRefinement* pGeometry = nullptr;
    const IntegrationResult* pIntegration = nullptr;
    VirtualFrameOptions virtualFrames;  ///< of the list for dynamical refinement
    QStringList* pWritten = nullptr;    ///< lent; gets the paths of all files but the frames; may be null
    QString strFolder;                  ///< where the files go; empty: the folder of the data set
};

/// Makes the export of one such program, see isForOtherProgram().
/// @param dataSet  as it was on return
/// @param nJobs    frames worked on side by side; the files are the same for each
/// @return true if all its files are written; else the log says why
bool writeForOtherProgram(ExportKind kind, DataSet& dataSet, const MappingParameters& mapping,
                          const FoundOfSeries& found, int nJobs, CRunReport& report);

}  // namespace tessera
