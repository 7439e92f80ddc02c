#include "road/stages.h"

#include "crystal/cellarithmetic.h"
#include "dataset/pagerounding.h"
#include "dataset/unitcellfile.h"
#include "frames/frametargets.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/latticehunting.h"
#include "road/cellresult.h"
#include "road/earlierfiles.h"
#include "road/filestamp.h"

namespace tessera {

namespace {

/// The method and range that were asked for, or else those of the window or the best to be had.
CellHuntingParameters chosenSearch(const RoadState& state)
{
    const RoadOptions& options = state.options;
    CellHuntingParameters chosen = options.cell;
    chosen.m_method = options.cellMethod.value_or(
        options.bWindowDefaults ? CellSearchMethod::DifferenceVectors : CellSearchMethod::BestOfBoth);
    chosen.m_bAutoRange = !options.bWindowDefaults && !options.dfCellRangeMin && !options.dfCellRangeMax;
    if (!options.bWindowDefaults && !chosen.m_bAutoRange) {
        CellHuntingParameters range;
        range.m_bAutoRange = true;
        range = withRange(range, state.dataSet);
        chosen.m_dfCellRangeMin = range.m_dfCellRangeMin;
        chosen.m_dfCellRangeMax = range.m_dfCellRangeMax;
    }
    takeOver(options.dfCellRangeMin, chosen.m_dfCellRangeMin);
    takeOver(options.dfCellRangeMax, chosen.m_dfCellRangeMax);
    roundToPages(chosen);
    return chosen;
}

RunOutcome huntCell(RoadState& state)
{
    const CellHuntingParameters search = chosenSearch(state);
    const RoadOptions& options = state.options;
    const QList<Peak3D>& listMerged = state.dataSet.m_listPeakMerged;
    if (options.bWindowDefaults && search.m_method == CellSearchMethod::DifferenceVectors) {
        return runUnitCellHunting(state.dataSet, listMerged, search, state.report, true);
    }
    return runLatticeHunting(state.dataSet, listMerged, search, options.indexing.m_dfIndexThreshold,
                             state.report, true, options.jobs());
}

/// The cell of the file that was given, and a copy of it as the result of this run.
StageResult takeGivenCell(RoadState& state, const QString& strFile)
{
    const QString& strGiven = state.options.strCellFile;
    StageResult result = loadCell(state, strGiven);
    if (result.finished() && !cellParametersFromList(state.dataSet.m_listCell)) {
        return state.report.failed(
            QStringLiteral("%1: the reciprocal vectors are co-planar, which is no cell.").arg(strGiven));
    }
    QString strReason;
    // A run does not write what it reads.
    const bool bOwn = !frameAmongTargets({strFile}, {strGiven}).isEmpty();
    if (result.finished() && !bOwn && !saveUnitCellFile(state.dataSet, strFile, &strReason)) {
        result = state.report.failed(strReason);
    }
    return result;
}

}  // namespace

StageResult runCellStage(RoadState& state)
{
    beginStage(state, RoadStage::Cell);
    const QString strFile = fileOfProject(state.dataSet, ResultFile::Cell);
    if (!state.options.strCellFile.isEmpty()) {
        StageResult result = takeGivenCell(state, strFile);
        if (result.finished()) {
            state.results.cell = cellResultOf(state.dataSet);
        }
        return result;
    }
    const FileStamp stamp = FileStamp::of(strFile);
    const RunOutcome outcome = huntCell(state);
    if (!outcome.finished()) {
        return state.report.ended(outcome);
    }
    state.results.cell = cellResultOf(state.dataSet);
    return replacedSince(stamp, strFile) ? StageResult() : state.report.notWritten(strFile);
}

}  // namespace tessera
