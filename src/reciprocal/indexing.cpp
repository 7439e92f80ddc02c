#include "reciprocal/indexing.h"

#include "crystal/cellarithmetic.h"
#include "crystal/cellrefinement.h"
#include "crystal/hklfile.h"
#include "crystal/indexedpeaklist.h"
#include "crystal/indexingfiles.h"
#include "crystal/indexingtable.h"
#include "crystal/reflectionconditions.h"
#include "crystal/reflectionindices.h"
#include "lattice/latticefit.h"
#include "reciprocal/basissolver.h"
#include "reciprocal/duplicates.h"
#include "reciprocal/indexedpeaks.h"
#include "reciprocal/indexspreading.h"
#include "reciprocal/latticepoints.h"
#include "reciprocal/reflectiongroups.h"
#include "records/formerfile.h"
#include "records/runends.h"
#include "records/timestamp.h"

#include <QFile>

#include <algorithm>
#include <optional>
#include <utility>

namespace tessera {

namespace {

/// Sorts the selection into indexed, unindexed and edge reflections.
void sortOut(IndexingResult& result, float fThreshold, int nFrames, bool bBasisValid)
{
    for (const Peak3D& peak : qAsConst(result.listSelection)) {
        // Without a valid basis nothing was indexed, whatever dfH, dfK and dfL are.
        if (!bBasisValid || !isCloseToInteger(peak, fThreshold)) {
            result.listUnindexedID.append(peak.nID);
        } else if ((peak.nFrame == 0 && nFrames > 2) || (peak.nFrame == nFrames - 1 && nFrames >= 3)) {
            result.listOnEdgeID.append(peak.nID);
        } else {
            result.listIndexed.append(peak);
            result.listRounded.append(peak);
            result.listRounded.last().setHKL(roundIndex(peak.dfH), roundIndex(peak.dfK),
                                             roundIndex(peak.dfL));
        }
    }
    const QList<QList<Peak3D>> listSplit = takeDuplicateReflections(result.listIndexed);
    result.listIndexed = listSplit[0];
    for (const Peak3D& peak : listSplit[1]) {
        result.listDuplicatedID.append(peak.nID);
    }
}

/// Keeps copies of former result files with reflections before files without any replace them.
/// @return false if the former files are to stay in their places
bool keepFormerResults(const DataSet& dataSet, CRunReport& report)
{
    QStringList listFile;
    QStringList listKept;
    for (const ResultFile file : {ResultFile::Reflections, ResultFile::P4P, ResultFile::IndexedPeaks}) {
        const QString strFile = fileOfProject(dataSet, file);
        listFile.append(strFile);
        if (QFile::exists(strFile)) {
            listKept.append(nameOfKept(strFile));
        }
    }
    QString strReason;
    switch (keepFormerFiles(listFile, countObservedOfFile, 0, &strReason)) {
        case FormerFiles::NoneWorthKeeping:
            return true;
        case FormerFiles::Kept:
            report.addMessage(QStringLiteral("No reflection was indexed. The former files are kept as %1.")
                                  .arg(listKept.join(QStringLiteral(", "))),
                              Severity::Error);
            return true;
        case FormerFiles::RicherAreKept:
            report.addMessage(
                QStringLiteral("No reflection was indexed. The former files stay, as %1 keeps more "
                               "reflections.")
                    .arg(nameOfKept(listFile.first())),
                Severity::Error);
            return false;
        case FormerFiles::Failed:
            report.addMessage(
                QStringLiteral("No reflection was indexed. The former files stay, as they cannot be kept."),
                Severity::Error);
            report.addMessage(strReason, Severity::Error);
            return false;
    }
    return false;
}

void writeResultFiles(const DataSet& dataSet, const QList<Peak3D>& listIndexed, CRunReport& report,
                      CFileSet* pFiles)
{
    if (dataSet.m_strProjectDir.isEmpty()) {
        // The reflections are of a list that was loaded alone, the cell was loaded or set by hand.
        report.addMessage(QStringLiteral("No data set is open, so no result files are written."),
                          Severity::Error);
        return;
    }
    const bool bNone = !holdsIndexed(listIndexed);
    if (bNone && !pFiles && !keepFormerResults(dataSet, report)) {
        return;
    }
    outputIndexingResultsToFile(listIndexed, cellInForce(dataSet), dataSet.m_listOverallTilt,
                                dataSet.m_strProjectDir, dataSet.m_strProjectName, report, pFiles);
    // The list of a former run stays on disk without chains and indexed peaks, as none can be made then, and
    // where this run has indexed nothing.
    const bool bAnyList = !dataSet.m_listPeakChain.isEmpty() || !dataSet.m_vecPeakIndexedOnFrame.isEmpty();
    if (bAnyList && !(bNone && QFile::exists(fileOfProject(dataSet, ResultFile::IndexedPeaks)))) {
        outputIndexedReflectionsOnFrames(dataSet.m_vecPeakIndexedOnFrame, dataSet.m_strProjectDir,
                                         dataSet.m_strProjectName, report, pFiles);
    }
}

/// Whether there are a cell and reflections; if not, the log says what is missing.
RunOutcome checkIndexable(const DataSet& dataSet, const QList<Peak3D>& listSelection, CRunReport& report)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
    if (!basis) {
        return refuseRun(report, QStringLiteral("Unit cell is not ready."));
    }
    if (listSelection.isEmpty()) {
        const QString strReason = QStringLiteral("No reflections to index.");
        report.addMessage(QStringLiteral("%1> %2").arg(currentTimeStamp(), strReason), Severity::Info);
        return {RunEnd::Refused, strReason};
    }
    if (!cellParameters(*basis)) {
        return refuseRun(report, QStringLiteral("Warning: co-planar reciprocal basis vectors!"));
    }
    return {};
}

/// The reflections with indices, sorted out and grouped; none when the run was stopped.
std::optional<IndexingResult> indexSelection(const QList<Peak3D>& listSelection, const ReciprocalBasis& basis,
                                             int nFrames, const IndexingParameters& parameters,
                                             CRunReport& report)
{
    const float fThreshold = float(parameters.m_dfIndexThreshold);
    IndexingResult result;
    result.listSelection = listSelection;
    if (!indexReflections(result.listSelection, basis, fThreshold, 1.f / 3.f, report)) {
        return std::nullopt;
    }
    sortOut(result, fThreshold, nFrames, CBasisSolver(basis).isValid());
    assignReflectionGroups(result.listIndexed, parameters.m_nSpaceGroup, fThreshold, report);
    return result;
}

void tellCell(const CellParameters& cell, CRunReport& report)
{
    report.addMessage(
        QStringLiteral("%1>Unit cell used for indexing: a=%L2 Å, b=%L3 Å, c=%L4 Å, α=%L5°, β=%L6°, γ=%L7°")
            .arg(currentTimeStamp())
            .arg(cell.a, 6, 'f', 3)
            .arg(cell.b, 6, 'f', 3)
            .arg(cell.c, 6, 'f', 3)
            .arg(cell.alpha, 6, 'f', 2)
            .arg(cell.beta, 6, 'f', 2)
            .arg(cell.gamma, 6, 'f', 2),
        Severity::Info);
}

void tellCount(int nIndexed, int nSelected, CRunReport& report)
{
    report.addMessage(QStringLiteral("%1> %L2 out of %L3 (%L4%) were indexed.")
                          .arg(currentTimeStamp())
                          .arg(nIndexed)
                          .arg(nSelected)
                          .arg(100.0 * nIndexed / nSelected, 6, 'f', 3),
                      Severity::Info);
}

void tellRefinedCell(const QList<Peak3D>& listRounded, const CellParameters& cell, CRunReport& report)
{
    if (listRounded.size() < 7) {
        report.addMessage(QStringLiteral("There aren't enough reflections for unit cell refinement."),
                          Severity::Error);
        return;
    }
    unitCellRefinement(listRounded, cell, report);
}

/// Says how many peaks of the frames lie on the lattice when each is divided by the cell by itself. The share
/// of indexed reflections is no measure of the cell, as indices spread from neighbour to neighbour.
void tellFit(const DataSet& dataSet, const ReciprocalBasis& basis, CRunReport& report)
{
    const LatticePoints listPoint = latticePoints(dataSet);
    if (listPoint.empty()) {
        return;
    }
    const LatticeFit fit = fitOfLattice(latticeBasisOf(basis), listPoint);
    report.addMessage(
        QStringLiteral("%1> %L2 out of %L3 peaks (%L4%) lie on the lattice, each by itself; by chance %L5%.")
            .arg(currentTimeStamp())
            .arg(fit.nFitting)
            .arg(fit.nPoints)
            .arg(100 * fit.share(), 6, 'f', 3)
            .arg(100 * fit.dfByChance, 6, 'f', 3),
        Severity::Info);
}

}  // namespace

bool holdsIndexed(const QList<Peak3D>& listIndexed)
{
    return std::any_of(listIndexed.begin(), listIndexed.end(), [](const Peak3D& peak) {
        return roundIndex(peak.dfH) != 0 || roundIndex(peak.dfK) != 0 || roundIndex(peak.dfL) != 0;
    });
}

IndexingResult runIndexing(DataSet& dataSet, const QList<Peak3D>& listSelection,
                           const IndexingParameters& parameters, CRunReport& report,
                           const std::function<void(const IndexingResult&)>& fnShow, CFileSet* pFiles)
{
    IndexingResult result;
    const RunOutcome ready = checkIndexable(dataSet, listSelection, report);
    if (!ready.finished()) {
        result.outcome = ready;
        return result;
    }
    const ReciprocalBasis basis = *cellInForce(dataSet);
    const CellParameters cell = *cellParameters(basis);
    if (!report.goOn()) {
        return result;
    }
    std::optional<IndexingResult> indexed = indexSelection(listSelection, basis, frameCount(dataSet),
                                                           parameters, report);
    if (!indexed || !report.goOn()) {
        return result;
    }
    result = std::move(*indexed);

    buildIndexedPeaksOnFrame(dataSet, result.listIndexed, report);
    dataSet.m_listReflectionIndexed = result.listIndexed;
    dataSet.m_listCellIndexed = dataSet.m_listCell;
    noteIndexedMade(dataSet, parameters.m_dfIndexThreshold);
    if (fnShow) {
        fnShow(result);
    }
    if (parameters.m_bOutputIndexing) {
        outputIndexingResultsToWindow(result.listIndexed, report);
        writeResultFiles(dataSet, result.listIndexed, report, pFiles);
    }
    tellCell(cell, report);
    tellCount(result.listIndexed.size(), result.listSelection.size(), report);
    tellFit(dataSet, basis, report);
    if (parameters.m_bOutputStatistics) {
        outputReflectionStatistics(result.listIndexed, 0.0, report);
        testReflectionConditions(result.listIndexed, parameters.m_dfIndexThreshold, dataSet.m_spaceGroup,
                                 report);
    }
    if (parameters.m_bOutputRefinedCell) {
        tellRefinedCell(result.listRounded, cell, report);
    }
    result.outcome = {};
    return result;
}

}  // namespace tessera
