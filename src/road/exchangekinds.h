// Exports for other programs, as made by the driver and the window.
#pragma once

#include "dataset/dataset.h"
#include "exchange/virtualframes.h"
#include "integration/integrationresult.h"
#include "records/runparameters.h"
#include "records/runreport.h"
#include "refinement/geometryrefinement.h"
#include "road/exportkind.h"

namespace tessera {

/// Results of a series that are not in its data set, and the destination of the export.
struct FoundOfSeries {
    const GeometryRefinement* pGeometry = nullptr;    ///< null: not refined
    const IntegrationResult* pIntegration = nullptr;  ///< null: not integrated
    VirtualFrameOptions virtualFrames;                ///< for the list for dynamical refinement
    QStringList* pWritten = nullptr;  ///< gets the paths of all files but the frames; may be null
    QString strFolder;                ///< folder of the files; empty: that of the data set
};

/// Writes the export for a program, see isForOtherProgram().
/// @param dataSet  unchanged on return
/// @param nJobs    frames processed in parallel; the files are the same for every number
/// @return true if all files were written; else the log has the reason
bool writeForOtherProgram(ExportKind kind, DataSet& dataSet, const MappingParameters& mapping,
                          const FoundOfSeries& found, int nJobs, CRunReport& report);

}  // namespace tessera
