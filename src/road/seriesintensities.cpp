#include "road/seriesintensities.h"

#include "reciprocal/latticepoints.h"
#include "records/runends.h"
#include "refinement/geometryofseries.h"
#include "road/integrationtable.h"

namespace tessera {

namespace {

/// The Bravais types of a lattice, as the refinement takes them.
std::vector<CellConstraint> constraintsOf(const LatticeAnalysis& lattice)
{
    std::vector<CellConstraint> listConstraint;
    for (const LatticeType& type : lattice.listType) {
        listConstraint.push_back({type.symmetry.system, type.matTransform, bravaisSymbol(type.symmetry)});
    }
    return listConstraint;
}

GeometryRefinement refinedGeometry(const DataSet& dataSet, const MappingParameters& mapping,
                                   const LatticeAnalysis& lattice, CRunReport& report)
{
    const std::optional<DiffractionGeometry> start = geometryOfSeries(dataSet, mapping);
    if (!start || !holdsIndicesOfCell(dataSet)) {
        report.addMessage(
            QStringLiteral("No peaks are indexed with the cell in force, so that the geometry is "
                           "not refined and discs may miss their spots. Index first."),
            Severity::Warning);
        GeometryRefinement none;
        none.strReason = QStringLiteral("No peaks are indexed.");
        return none;
    }
    GeometryRefinementOptions options;
    options.listConstraint = constraintsOf(lattice);
    const GeometryRefinement refined = refineGeometry(geometrySpots(dataSet), *start, options, report);
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

RunOutcome intensitiesOfSeries(const DataSet& dataSet, const MappingParameters& mapping,
                               const IntensityOptions& options, int nJobs, CRunReport& report,
                               IntegrationResult& result)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
    if (!basis) {
        return refuseRun(report, QStringLiteral("Unit cell is not ready."));
    }
    FurtherLatticesOptions further;
    further.nMostLattices = 1;  // others say nothing of this one
    const LatticeAnalysis lattice = analyseLattice(latticeBasisOf(*basis), latticePoints(dataSet), further,
                                                   [&report] { return report.goOn(); });
    const GeometryRefinement refined = refinedGeometry(dataSet, mapping, lattice, report);
    RunOutcome outcome = {RunEnd::Stopped, {}};
    if (report.goOn()) {
        outcome = findIntensities(dataSet, mapping, refined.done() ? &refined : nullptr, &lattice, options,
                                  nJobs, report, result);
    }
    if (outcome.finished()) {
        for (const QString& strLine : integrationTable(result)) {
            report.addMessage(strLine);
        }
    } else if (outcome.end == RunEnd::Stopped) {
        report.addMessage(QStringLiteral("The integration did not finish."), Severity::Error);
    }
    return outcome;
}

}  // namespace tessera
