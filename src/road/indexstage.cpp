#include "road/stages.h"

#include "crystal/cellarithmetic.h"
#include "crystal/cellrefinement.h"
#include "crystal/indexedpeaklist.h"
#include "crystal/indexingfiles.h"
#include "crystal/reflectionindices.h"
#include "reciprocal/indexing.h"
#include "records/fileset.h"
#include "road/cellresult.h"
#include "road/earlierfiles.h"
#include "road/judgement.h"
#include "road/latticefinding.h"
#include "road/stagejudgement.h"

#include <QFileInfo>
#include <QStringList>

namespace tessera {

namespace {

std::optional<CellRefinement> refineCell(const QList<Peak3D>& listIndexed, const DataSet& dataSet,
                                         CRunReport& report)
{
    if (listIndexed.size() < 7) {
        report.addMessage(QStringLiteral("There aren't enough reflections for unit cell refinement."),
                          Severity::Error);
        return {};
    }
    const std::optional<CellParameters> cell = cellParametersFromList(dataSet.m_listCell);
    return cell ? unitCellRefinement(listIndexed, *cell, report) : std::nullopt;
}

QList<Peak3D> withWholeIndices(QList<Peak3D> listPeak)
{
    for (Peak3D& peak : listPeak) {
        peak.setHKL(roundedIndex(peak.dfH), roundedIndex(peak.dfK), roundedIndex(peak.dfL));
    }
    return listPeak;
}

constexpr ResultFile g_aFile[] = {ResultFile::Reflections, ResultFile::P4P, ResultFile::IndexedPeaks};

/// The names of existing files of a former run.
QString formerFiles(const DataSet& dataSet)
{
    QStringList listName;
    for (const ResultFile file : g_aFile) {
        const QString strFile = fileOfProject(dataSet, file);
        if (QFileInfo::exists(strFile)) {
            listName.append(QFileInfo(strFile).fileName());
        }
    }
    return listName.join(QStringLiteral(", "));
}

/// Writes the files of the stage, either all or none.
StageResult commitFiles(CFileSet& files, RoadState& state)
{
    CRoadReport& report = state.report;
    QStringList listFile;
    for (const ResultFile file : g_aFile) {
        const QString strFile = fileOfProject(state.dataSet, file);
        listFile.append(strFile);
        if (files.reason().isEmpty() && !files.holds(strFile)) {
            return report.failed(
                QStringLiteral("%1 was not written; the files of the stage are as they were before.")
                    .arg(strFile));
        }
    }
    QString strReason;
    if (!files.commit(&strReason)) {
        return report.failed(
            QStringLiteral("%1; the files of the stage are as they were before.").arg(strReason));
    }
    tellHKLWritten(fileOfProject(state.dataSet, ResultFile::Reflections), report);
    tellP4PWritten(fileOfProject(state.dataSet, ResultFile::P4P), report);
    tellIndexedPeaksWritten(fileOfProject(state.dataSet, ResultFile::IndexedPeaks), report);
    state.results.listFile += listFile;
    return {};
}

}  // namespace

StageResult runIndexStage(RoadState& state)
{
    beginStage(state, RoadStage::Index);
    RoadOptions& options = state.options;
    CRoadReport& report = state.report;
    if (options.stageFrom > RoadStage::Cell && !options.strCellFile.isEmpty()) {
        StageResult loaded = loadCell(state, options.strCellFile);
        if (!loaded.finished()) {
            return loaded;
        }
    }
    if (!state.results.lattice) {
        findLattice(state);  // for a cell that was given
    }
    // If the road starts at a later stage, the files of this stage are not replaced.
    const bool bWrite = options.stageFrom <= RoadStage::Index;
    options.indexing.m_bOutputIndexing = bWrite;
    CFileSet files;
    const IndexingResult result = runIndexing(state.dataSet, state.dataSet.m_listPeakMerged, options.indexing,
                                              report, {}, &files);
    if (!result.outcome.finished()) {
        return report.ended(result.outcome);
    }
    state.results.cell = cellResultOf(state.dataSet);
    IndexResult& index = state.results.index.emplace();
    index.nIndexed = result.listIndexed.size();
    index.nDuplicated = result.listDuplicatedID.size();
    index.nUnindexed = result.listUnindexedID.size();
    index.nOnEdge = result.listOnEdgeID.size();
    index.dfShare = indexedShareOf(result);
    index.refined = refineCell(withWholeIndices(result.listIndexed), state.dataSet, report);
    index.centreOffset = judgeCentre(result, state.dataSet, report);
    index.bOppositeSense = judgeRotation(result.listIndexed, state.dataSet, report);
    if (!holdsIndexed(result.listIndexed)) {
        return report.failed(
            QStringLiteral("No reflection was indexed; the files of the stage are as they were before."));
    }
    judgeIndexedShare(result, report);
    const QString strFormer = formerFiles(state.dataSet);
    if (bWrite && !options.bAccept && state.results.cell->fit && !fitsLattice(*state.results.cell->fit) &&
        !strFormer.isEmpty()) {
        return report.refused(
            QStringLiteral("Most of the peaks do not lie on the lattice of this cell, so the former files of "
                           "the stage, %1, stay as they were; --accept writes them all the same.")
                .arg(strFormer));
    }
    return bWrite ? commitFiles(files, state) : StageResult();
}

}  // namespace tessera
