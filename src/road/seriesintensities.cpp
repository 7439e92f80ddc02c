#include "road/seriesintensities.h"

#include "reciprocal/latticepoints.h"
#include "records/runends.h"
#include "road/integrationtable.h"
#include "road/intensityjudgement.h"
#include "road/seriesgeometry.h"

namespace tessera {

namespace {

GeometryRefinement refinedGeometry(DataSet& dataSet, const MappingParameters& mapping,
                                   const LatticeAnalysis& lattice, int nJobs, CRunReport& report)
{
    if (!holdsIndicesOfCell(dataSet)) {
        report.addMessage(
            QStringLiteral("No peaks are indexed with the cell in force, so that the geometry is "
                           "not refined and discs may miss their spots. Index first."),
            Severity::Warning);
        GeometryRefinement none;
        none.strReason = QStringLiteral("No peaks are indexed.");
        return none;
    }
    GeometryRefinementOptions options;
    options.listConstraint = constraintsOf(lattice.listType);
    const GeometryRefinement refined = refineSeriesGeometry(dataSet, mapping, options, nJobs, report);
    if (refined.done()) {
        report.addMessage(
            QStringLiteral("The geometry is refined against %L1 indexed peaks, with an rms of %L2 px.")
                .arg(refined.nFitAfter)
                .arg(refined.dfRmsAfter, 0, 'f', 2));
    } else {
        report.addMessage(QStringLiteral("The geometry stays as it is. %1").arg(refined.strReason));
    }
    return refined;
}

}  // namespace

RunResult<IntegrationResult> intensitiesOfSeries(DataSet& dataSet, const MappingParameters& mapping,
                                                 const IntensityOptions& options, int nJobs,
                                                 CRunReport& report)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
    if (!basis) {
        return refuseRun(report, QStringLiteral("Unit cell is not ready."));
    }
    FurtherLatticesOptions further;
    further.nMostLattices = 1;  // further lattices are of no use here
    const LatticeAnalysis lattice = analyseLattice(latticeBasisOf(*basis), latticePoints(dataSet), further,
                                                   [&report] { return report.goOn(); });
    const GeometryRefinement refined = refinedGeometry(dataSet, mapping, lattice, nJobs, report);
    RunResult<IntegrationResult> result = RunOutcome{RunEnd::Stopped, {}};
    if (report.goOn()) {
        result = findIntensities(dataSet, mapping, refined.done() ? &refined : nullptr, &lattice, options,
                                 nJobs, report);
    }
    if (result.finished()) {
        for (const QString& strLine : integrationTable(*result.made)) {
            report.addMessage(strLine);
        }
        report.addMessage(judgementLine(judgeIntensities(*result.made)), Severity::Milestone);
    } else if (result.outcome.end == RunEnd::Stopped) {
        report.addMessage(QStringLiteral("The integration did not finish."), Severity::Error);
    }
    return result;
}

}  // namespace tessera
