#include "road/stages.h"

#include "crystal/cellarithmetic.h"
#include "dataset/unitcellfile.h"
#include "frames/frametargets.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/checkedcellhunting.h"
#include "road/cellresult.h"
#include "road/earlierfiles.h"
#include "road/filestamp.h"

namespace tessera {

namespace {

RunOutcome huntCell(RoadState& state)
{
    DataSet& dataSet = state.dataSet;
    const RoadOptions& options = state.options;
    const QList<Peak3D>& listMerged = dataSet.m_listPeakMerged;
    return options.bWindowDefaults
               ? runUnitCellHunting(dataSet, listMerged, options.cell, state.report, true)
               : runCheckedCellHunting(dataSet, listMerged, options.cell, options.indexing.m_dfIndexThreshold,
                                       state.report, true);
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
