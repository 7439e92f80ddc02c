#include "road/integrationtable.h"
#include "road/intensities.h"
#include "road/stagejudgement.h"
#include "road/stages.h"

namespace tessera {

namespace {

/// Why a cell is too bad for an integration; empty if it is good enough.
QString whyNotIntegrated(const RoadState& state)
{
    const std::optional<CellResult>& cell = state.results.cell;
    if (state.options.bAccept || !cell || !cell->fit || fitsLattice(*cell->fit)) {
        return {};
    }
    return QStringLiteral(
        "Most of the peaks do not lie on the lattice of this cell, so there is nothing to "
        "predict from it; --accept integrates all the same.");
}

}  // namespace

StageResult runIntegrateStage(RoadState& state)
{
    beginStage(state, RoadStage::Integrate);
    CRoadReport& report = state.report;
    RoadResults& results = state.results;
    IntegrateResult& integrate = results.integrate.emplace();
    integrate.strReason = whyNotIntegrated(state);
    if (!integrate.strReason.isEmpty()) {
        report.addMessage(QStringLiteral("Not integrated. %1").arg(integrate.strReason), Severity::Milestone);
        return {};
    }
    const IntensityOptions& options = state.options.intensities;
    RunResult<IntegrationResult> result = findIntensities(
        state.dataSet, state.mapping, results.geometry ? &*results.geometry : nullptr,
        results.lattice ? &*results.lattice : nullptr, options, state.options.jobs(), report);
    if (result.outcome.end == RunEnd::Stopped) {
        return report.ended(result.outcome);
    }
    if (!result.finished()) {
        // Earlier stages have succeeded, and missing intensities are not an error of the run.
        integrate.strReason = result.outcome.strReason;
        report.addMessage(
            QStringLiteral("There are no intensities; files of a former run stay as they were."),
            Severity::Milestone);
        return {};
    }
    for (const QString& strLine : integrationTable(*result.made)) {
        report.addMessage(strLine);
    }
    QString strReason;
    std::optional<IntegrationFiles> files = writeIntensities(
        state.dataSet, *result.made, options, {state.options.strKnownCellFile, state.options.strMaskFile},
        report, &strReason);
    if (!files) {
        integrate.strReason = strReason;
        return report.failed(
            QStringLiteral("%1; the files of the stage are as they were before.").arg(strReason));
    }
    integrate.files = std::move(*files);
    results.listFile += integrate.files.listFile;
    integrate.result = std::move(result.made);
    state.dataSet.m_made.integration = madeWithGeometry(state.dataSet);
    return {};
}

}  // namespace tessera
