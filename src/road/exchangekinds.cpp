#include "road/exchangekinds.h"

#include "exchange/exchangeexport.h"
#include "records/runends.h"
#include "road/finespots.h"

namespace tessera {

namespace {

RunOutcome exportFor(ExportKind kind, const ExchangeSource& source, const VirtualFrameOptions& virtualFrames,
                     DataSet& dataSet, int nJobs, CRunReport& report)
{
    switch (kind) {
        case ExportKind::Xds:
            return exportForXds(source, report);
        case ExportKind::Dials:
            return exportForDials(source, fineSpots(dataSet, nJobs, report), report);
        case ExportKind::Pets:
            return exportForPets(source, report);
        case ExportKind::DynamicCif:
            return exportZoneAxisCif(source, virtualFrames, report);
        default:
            return refuseRun(report, QStringLiteral("No export for another program."));
    }
}

}  // namespace

bool writeForOtherProgram(ExportKind kind, DataSet& dataSet, const MappingParameters& mapping,
                          const FoundOfSeries& found, int nJobs, CRunReport& report)
{
    const GeometryRefinement* pRefined = found.pGeometry && found.pGeometry->done() ? found.pGeometry
                                                                                    : nullptr;
    std::optional<ExchangeSource> source = exchangeSource(dataSet, mapping, pRefined, found.pIntegration);
    if (!source) {
        report.fail(
            QStringLiteral("To export for other programs, the tilts and shifts of all frames are "
                           "needed."));
        return false;
    }
    source->pWritten = found.pWritten;
    if (!found.strFolder.isEmpty()) {
        source->strFolder = found.strFolder;
    }
    const RunOutcome outcome = exportFor(kind, *source, found.virtualFrames, dataSet, nJobs, report);
    if (outcome.end == RunEnd::Stopped) {
        report.addMessage(QStringLiteral("The export did not finish."), Severity::Error);
    }
    return outcome.finished();
}

}  // namespace tessera
