#include "road/stages.h"

#include "crystal/cellarithmetic.h"
#include "dataset/pagerounding.h"
#include "dataset/unitcellfile.h"
#include "frames/frametargets.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/latticehunting.h"
#include "road/cellresult.h"
#include "road/cellsearch.h"
#include "road/chosensearch.h"
#include "road/earlierfiles.h"
#include "road/knowncellsearch.h"
#include "road/latticefinding.h"
#include "road/stagejudgement.h"

#include <QFileInfo>

namespace tessera {

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

namespace {

StageResult huntCell(RoadState& state)
{
    const RoadOptions& options = state.options;
    CellSearch search;
    search.range = chosenSearch(state);
    search.dfIndexThreshold = options.indexing.m_dfIndexThreshold;
    search.poorCell = options.bWindowDefaults ? PoorCell::Taken : PoorCell::SearchedAgain;
    search.nJobs = options.jobs();
    search.bSave = false;  // the cell is saved after it has been judged
    return searchCell(state.dataSet, state.dataSet.m_listPeakMerged, search, state.report).end;
}

/// Reads the given cell file, and copies it to the results of this run.
StageResult takeGivenCell(RoadState& state, const QString& strFile)
{
    const QString& strGiven = state.options.strCellFile;
    StageResult result = loadCell(state, strGiven);
    if (result.finished() && !cellParametersFromList(state.dataSet.m_listCell)) {
        return state.report.failed(
            QStringLiteral("%1: the reciprocal vectors are co-planar, which is no cell.").arg(strGiven));
    }
    QString strReason;
    // A run must not replace its own input.
    const bool bOwn = !frameAmongTargets({strFile}, {strGiven}).isEmpty();
    if (!result.finished() || bOwn) {
        return result;
    }
    if (!saveUnitCellFile(state.dataSet, strFile, &strReason)) {
        return state.report.failed(strReason);
    }
    state.results.listFile.append(strFile);
    return result;
}

/// Writes the cell in force, unless the peaks do not fit it and there is a former file, which would be lost
/// otherwise.
StageResult saveFoundCell(RoadState& state, const QString& strFile)
{
    const std::optional<LatticeFit>& fit = state.results.cell->fit;
    if (fit && !fitsLattice(*fit) && !state.options.bAccept && QFileInfo::exists(strFile)) {
        state.report.addMessage(
            QStringLiteral(
                "Warning: most of the peaks do not lie on the lattice of the new cell, so %1 stays "
                "as it was; --accept writes the new cell all the same.")
                .arg(strFile),
            Severity::Warning);
        return {};
    }
    if (!saveProjectCell(state.dataSet, state.report)) {
        return state.report.notWritten(strFile);
    }
    state.results.listFile.append(strFile);
    return {};
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
    const std::optional<CellParameters>& known = state.options.knownCell;
    const StageResult found = known ? searchKnownCell(state.dataSet, *known, state.report) : huntCell(state);
    if (found.end == RunEnd::Failed && !known) {
        state.report.addMessage(QStringLiteral(
            "Where the cell of the crystal is known, --known-cell looks for its orientation instead."));
    }
    if (!found.finished()) {
        return state.report.ended(found);
    }
    findLattice(state);
    state.results.cell = cellResultOf(state.dataSet);
    return saveFoundCell(state, strFile);
}

}  // namespace tessera
