#include "batch/batchroad.h"

#include "crystal/cellarithmetic.h"
#include "crystal/cellrefinement.h"
#include "crystal/crystalparacal.h"
#include "crystal/reflectionindices.h"
#include "dataset/maskfile.h"
#include "dataset/opening.h"
#include "dataset/pagerounding.h"
#include "dataset/peaklistfile.h"
#include "dataset/shiftfile.h"
#include "dataset/unitcellfile.h"
#include "frames/autoregion.h"
#include "frames/autothreshold.h"
#include "frames/frametargets.h"
#include "frames/peakhunting.h"
#include "frames/positionrefinement.h"
#include "frames/shiftevaluation.h"
#include "frames/shiftjumps.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/cellfromdifferences.h"
#include "reciprocal/cellhunting.h"
#include "reciprocal/centreoffset.h"
#include "reciprocal/checkedcellhunting.h"
#include "reciprocal/indexing.h"
#include "reciprocal/mapping.h"
#include "reciprocal/merging.h"
#include "reciprocal/peakgroups.h"
#include "reciprocal/rotationsense.h"
#include "records/fileset.h"
#include "road/filestamp.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>

#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>
#include <utility>

namespace tessera {

namespace {

const double NO_LIMIT = std::numeric_limits<double>::infinity();
const double SHORTEST_PAIR = 0.3;   ///< Å⁻¹, between two peaks of a frame
const double SHARE_EXPECTED = 0.5;  ///< of the reflections, that a right cell and geometry index at the least
const double SHIFT_JUMP = 10;       ///< pixels from the neighbours that no drift makes in one frame

void takeOver(const std::optional<double>& dfGiven, double& dfTarget)
{
    if (dfGiven) {
        dfTarget = *dfGiven;
    }
}

/// A limit as its box would hold it; the range has been seen to on the command line.
void takeLimit(const std::optional<double>& dfGiven, double& dfTarget, int nDecimals = 2)
{
    if (dfGiven) {
        dfTarget = spinBoxValue(*dfGiven, nDecimals, -NO_LIMIT, NO_LIMIT);
    }
}

int countPeaks(const QList<QList<Peak3D>>& listPeakFrame)
{
    int nCount = 0;
    for (const QList<Peak3D>& listPeak : listPeakFrame) {
        nCount += listPeak.size();
    }
    return nCount;
}

QJsonArray toArray(const double* pdfValue, int nCount)
{
    QJsonArray array;
    for (int i = 0; i < nCount; ++i) {
        array.append(pdfValue[i]);
    }
    return array;
}

/// The greatest diagonal of a box that holds the peaks of one frame, pixels.
double largestExtent(const QVector<QList<Peak3D>>& vecPeak)
{
    double dfLargest = 0;
    for (const QList<Peak3D>& listPeak : vecPeak) {
        double dfLeft = NO_LIMIT, dfRight = -NO_LIMIT, dfTop = NO_LIMIT, dfBottom = -NO_LIMIT;
        for (const Peak3D& peak : listPeak) {
            dfLeft = std::min(dfLeft, peak.dfX2D);
            dfRight = std::max(dfRight, peak.dfX2D);
            dfTop = std::min(dfTop, peak.dfY2D);
            dfBottom = std::max(dfBottom, peak.dfY2D);
        }
        if (!listPeak.isEmpty()) {
            dfLargest = std::max(dfLargest, std::hypot(dfRight - dfLeft, dfBottom - dfTop));
        }
    }
    return dfLargest;
}

double medianIntensity(const QVector<QList<Peak3D>>& vecPeak)
{
    std::vector<double> vecIntensity;
    for (const QList<Peak3D>& listPeak : vecPeak) {
        for (const Peak3D& peak : listPeak) {
            vecIntensity.push_back(peak.dfIPoint);
        }
    }
    if (vecIntensity.empty()) {
        return -NO_LIMIT;
    }
    const auto itMiddle = vecIntensity.begin() + std::ptrdiff_t(vecIntensity.size() / 2);
    std::nth_element(vecIntensity.begin(), itMiddle, vecIntensity.end());
    return *itMiddle;
}

QString limitText(double dfLimit)
{
    return std::isinf(dfLimit) ? QStringLiteral("any") : QString::number(dfLimit, 'f', 1);
}

QJsonArray toArray(const CellParameters& cell)
{
    return toArray(cell.numbers().data(), 6);
}

QString cellText(const CellParameters& cell, const CellParameters& stdErr)
{
    static const char* const aszName[] = {"a", "b", "c", "α", "β", "γ"};
    const std::array<double, 6> adfCell = cell.numbers(), adfError = stdErr.numbers();
    QStringList listPart;
    for (int i = 0; i < 6; ++i) {
        listPart.append(QStringLiteral("%1=%2(%3)%4")
                            .arg(QString::fromUtf8(aszName[i]))
                            .arg(adfCell[i], 0, 'f', i < 3 ? 4 : 3)
                            .arg(adfError[i], 0, 'f', i < 3 ? 4 : 3)
                            .arg(i < 3 ? QStringLiteral(" Å") : QStringLiteral("°")));
    }
    return listPart.join(QStringLiteral(", "));
}

QJsonObject pairsObject(const DifferenceVectorRefinement& found)
{
    return {{QStringLiteral("parameters"), toArray(found.refinement->cell)},
            {QStringLiteral("standardErrors"), toArray(found.refinement->cellStdErr)},
            {QStringLiteral("rmsDStar"), found.refinement->dfRmsAfter[0]},
            {QStringLiteral("pairs"), double(found.nPairs)},
            {QStringLiteral("groups"), found.listDifference.size()},
            {QStringLiteral("groupsRejected"), found.nGroupsRejected},
            {QStringLiteral("vectorsRejected"), found.nVectorsRejected}};
}

}  // namespace

CBatchRoad::CBatchRoad(const BatchOptions& options, CBatchReport& report)
    : m_options(options), m_report(report)
{}

bool CBatchRoad::fail(const QString& strText)
{
    m_report.fail(strText);
    return false;
}

/// Whether a file stands that a run of the core was to write; if not, the run's last red line says why.
bool CBatchRoad::written(const FileStamp& stamp, const QString& strFile)
{
    if (replacedSince(stamp, strFile)) {
        return true;
    }
    noteLastRedLine();
    return fail(QStringLiteral("%1 was not written.").arg(strFile));
}

/// Where no reason was given, the last red line of the part of the road under way is taken for it.
void CBatchRoad::noteLastRedLine()
{
    const QStringList& listRed = m_report.redLines();
    if (listRed.size() > m_nRedBefore) {
        m_report.noteReason(listRed.last());
    }
}

/// Marks the first part of the road that failed, which the report has the reason of.
void CBatchRoad::markFailed(const QString& strPart)
{
    if (!m_summary.contains(QStringLiteral("failed"))) {
        m_summary[QStringLiteral("failed")] = strPart;
    }
    noteLastRedLine();
    if (m_report.reason().isEmpty()) {
        fail(QStringLiteral("%1 did not reach its end.").arg(strPart));
    }
}

/// What comes from here on has reasons of its own to fail, unless something has failed already.
void CBatchRoad::beginPart()
{
    if (!m_summary.contains(QStringLiteral("failed"))) {
        m_report.forgetReason();
    }
    m_nRedBefore = m_report.redLines().size();
}

QString CBatchRoad::resultBase() const
{
    if (!m_bOpened) {
        return {};
    }
    return fileOfProject(m_dataSet, {});
}

bool CBatchRoad::run()
{
    m_summary[QStringLiteral("stage")] = QStringLiteral("none");
    const bool bOpened = open();
    if (!bOpened) {
        markFailed(QStringLiteral("open"));
    }
    bool bReached = bOpened && (m_options.exports.bOnly || runStages());
    bReached = bReached && runExports();
    m_summary[QStringLiteral("reached")] = bReached;
    m_summary[QStringLiteral("seconds")] = m_times;
    return bReached;
}

bool CBatchRoad::runStages()
{
    bool bReached = true;
    for (int nStage = int(BatchStage::Shifts); bReached && nStage <= int(m_options.stageTo); ++nStage) {
        const BatchStage stage = BatchStage(nStage);
        // Merged reflections have no file, and that of the indexed peaks has only whole pixels: a later start
        // makes both anew from peak list and cell.
        const bool bAnew = stage == BatchStage::Merge || stage == BatchStage::Index;
        if (stage < m_options.stageFrom && !bAnew) {
            continue;
        }
        QElapsedTimer timer;
        timer.start();
        roundParameters();
        beginPart();
        bReached = runStage(stage);
        m_times[batchStageName(stage)] = double(timer.elapsed()) / 1000;
        if (bReached) {
            m_summary[QStringLiteral("stage")] = batchStageName(stage);
        } else {
            markFailed(batchStageName(stage));
        }
    }
    return bReached;
}

/// One export that fails keeps none of the others back.
bool CBatchRoad::runExports()
{
    QJsonArray arrayDone;
    bool bAll = true;
    for (const QString& strKind : m_options.exports.listKind) {
        QElapsedTimer timer;
        timer.start();
        roundParameters();
        beginPart();
        const bool bDone = runBatchExport(strKind, m_options.exports, m_dataSet, m_report);
        m_times[strKind] = double(timer.elapsed()) / 1000;
        if (bDone) {
            arrayDone.append(strKind);
        } else {
            markFailed(strKind);
        }
        bAll = bAll && bDone;
    }
    if (!m_options.exports.listKind.isEmpty()) {
        m_summary[QStringLiteral("exported")] = arrayDone;
    }
    return bAll;
}

bool CBatchRoad::open()
{
    if (!openInput()) {
        // With a folder of its own the series still gets its log there, under the name it would have had.
        m_dataSet.m_strProjectName = QFileInfo(m_options.listInput.first()).completeBaseName();
        if (!m_options.strOutDir.isEmpty()) {
            prepareResultFolder();
        }
        return false;
    }
    takeGeometry();
    m_strInputDir = m_dataSet.m_strProjectDir;
    m_summary[QStringLiteral("name")] = m_dataSet.m_strProjectName;
    m_summary[QStringLiteral("frames")] = m_dataSet.m_listFrameFile.size();
    if (m_dataSet.m_listFrameFile.isEmpty()) {
        fail(QStringLiteral("%1: no frames in the file list.").arg(m_options.listInput.first()));
    }
    if (!prepareResultFolder() || m_dataSet.m_listFrameFile.isEmpty()) {
        return false;
    }
    if (!m_options.strMaskFile.isEmpty()) {
        QString strReason;
        if (readMaskFile(m_dataSet.m_maskPeakHunting, m_options.strMaskFile, &strReason) == 0) {
            m_report.addMessage(
                QStringLiteral("Error occured when loading %1 as mask file.").arg(m_options.strMaskFile),
                Severity::Error);
            return fail(strReason);
        }
    }
    const bool bFramesRead = m_options.stageFrom <= BatchStage::Peaks ||
                             m_options.stageTo >= BatchStage::Refine || !m_options.exports.listKind.isEmpty();
    if (bFramesRead && !checkFrameFiles()) {
        return false;
    }
    return loadEarlierStages();
}

bool CBatchRoad::openInput()
{
    m_dataSet.m_strWorkingDir = QFileInfo(m_options.listInput.first()).absolutePath();
    QStringList& listReason = m_listSideReason;
    bool bOpened = false;
    if (m_options.isProject()) {
        bOpened = openProject(m_dataSet, m_mapping, m_options.listInput.first(), m_report, &listReason);
    } else {
        QStringList listFile;
        for (const QString& strFile : m_options.listInput) {
            listFile.append(QFileInfo(strFile).absoluteFilePath());
        }
        bOpened = openImageFiles(m_dataSet, listFile, m_report, &listReason);
    }
    for (const QString& strReason : listReason) {
        m_report.addMessage(strReason, bOpened ? Severity::Info : Severity::Error);
    }
    if (!bOpened && !m_report.reason().isEmpty()) {  // the log has it without the file
        m_report.addMessage(m_report.reason(), Severity::Error);
    }
    m_listSideReason += m_report.redLines();
    return bOpened;
}

void CBatchRoad::takeGeometry()
{
    takeOver(m_options.dfWavelength, m_dataSet.m_dfWavelength);
    takeOver(m_options.dfPixelSize, m_dataSet.m_dfPixelSize);
    if (m_options.dfRotationAxis) {
        m_dataSet.m_dfRotationAxis = wrappedAxis(*m_options.dfRotationAxis);
    }
    takeOver(m_options.dfTiltRelaxation, m_dataSet.m_dfTiltRelaxation);
    takeOver(m_options.dfStretchAmplitude, m_dataSet.m_dfStretchAmplitude);
    takeOver(m_options.dfStretchAzimuth, m_dataSet.m_dfStretchAzimuth);
    if (m_options.bApplyStretching) {
        m_mapping.m_bApplyStretching = *m_options.bApplyStretching;
    } else if (m_options.dfStretchAmplitude) {
        m_mapping.m_bApplyStretching = true;
    }
    if (m_options.dfTiltStart || m_options.dfTiltStep) {
        const double dfStart = m_options.dfTiltStart.value_or(0);
        const double dfStep = m_options.dfTiltStep.value_or(0.1);
        for (int i = 0; i < m_dataSet.m_listOverallTilt.size(); ++i) {
            m_dataSet.m_listStageTilt[i] = m_dataSet.m_listOverallTilt[i] = dfStart + i * dfStep;
        }
    }
}

bool CBatchRoad::prepareResultFolder()
{
    if (!m_options.strOutDir.isEmpty()) {
        m_dataSet.m_strProjectDir = QFileInfo(m_options.strOutDir).absoluteFilePath();
        if (!QDir().mkpath(m_dataSet.m_strProjectDir)) {
            return fail(QStringLiteral("%1: the folder cannot be made.").arg(m_dataSet.m_strProjectDir));
        }
    }
    const QFileInfo folder(m_dataSet.m_strProjectDir);
    if (!folder.isDir() || !folder.isWritable()) {
        return fail(QStringLiteral("%1: the folder cannot be written.").arg(m_dataSet.m_strProjectDir));
    }
    m_bOpened = true;
    return true;
}

bool CBatchRoad::checkFrameFiles()
{
    QStringList listMissing;
    for (const QString& strFile : m_dataSet.m_listFrameFile) {
        if (!QFileInfo(strFile).isReadable()) {
            listMissing.append(strFile);
        }
    }
    if (listMissing.isEmpty()) {
        return true;
    }
    return fail(QStringLiteral("%1 of %2 frames cannot be read, first %3")
                    .arg(listMissing.size())
                    .arg(m_dataSet.m_listFrameFile.size())
                    .arg(listMissing.first()));
}

bool CBatchRoad::loadEarlierStages()
{
    if (m_options.exports.bOnly) {
        const bool bRead = !m_options.exports.needsShifts() || loadShifts();
        takeOver(m_options.dfCenterX, m_dataSet.m_dfCenterX);
        takeOver(m_options.dfCenterY, m_dataSet.m_dfCenterY);
        return bRead;
    }
    if (m_options.stageFrom > BatchStage::Shifts && !loadShifts()) {
        return false;
    }
    takeOver(m_options.dfCenterX, m_dataSet.m_dfCenterX);
    takeOver(m_options.dfCenterY, m_dataSet.m_dfCenterY);
    if (m_options.stageFrom > BatchStage::Peaks && !loadPeaks()) {
        return false;
    }
    if (m_options.stageFrom > BatchStage::Cell && m_options.strCellFile.isEmpty()) {
        return loadCell(earlierCellFile());
    }
    return true;
}

/// What opening said of a file beside the project, with a blank before it.
QString CBatchRoad::sideReason(const QRegularExpression& which) const
{
    const QStringList listFound = m_listSideReason.filter(which);
    return listFound.isEmpty() ? QString() : QLatin1Char(' ') + listFound.first();
}

// Opening a project has read what lies beside it; results in another folder come on top.
bool CBatchRoad::loadShifts()
{
    const QString strFile = resultBase() + QStringLiteral(".sc");
    QString strReason;
    if (QFileInfo::exists(strFile) && loadShiftFile(m_dataSet, strFile, m_report, &strReason) == 0) {
        return fail(
            QStringLiteral("Error occured when loading %1 as shift data. %2").arg(strFile, strReason));
    }
    const int nFrames = m_dataSet.m_listFrameFile.size();
    if (m_options.stageTo >= BatchStage::Merge && m_dataSet.m_listShift.size() != nFrames) {
        return fail(
            QStringLiteral("No shift data for the %1 frames in %2 or %3; run the stage shifts first.%4")
                .arg(nFrames)
                .arg(m_dataSet.m_strProjectDir, m_strInputDir,
                     sideReason(QRegularExpression(QStringLiteral("\\.sc:|shifts\\.txt:|shift data")))));
    }
    return true;
}

bool CBatchRoad::loadPeaks()
{
    const QString strFile = resultBase() + QStringLiteral(".pk");
    QString strReason;
    const bool bRead = m_strInputDir == m_dataSet.m_strProjectDir && m_options.isProject();
    if (!bRead && QFileInfo::exists(strFile) && readPeakList(m_dataSet, strFile, m_report, &strReason) == 0) {
        return fail(QStringLiteral("%1: no peaks loaded. %2").arg(strFile, strReason));
    }
    const int nFrames = m_dataSet.m_listFrameFile.size();
    if (m_dataSet.m_listPeakFrame.size() != nFrames) {
        return fail(
            QStringLiteral("No peak list for the %1 frames in %2 or %3; run the stage peaks first.%4")
                .arg(nFrames)
                .arg(m_dataSet.m_strProjectDir, m_strInputDir,
                     sideReason(QRegularExpression(QStringLiteral("\\.pk:|peaklist\\.txt:|Peak list")))));
    }
    return true;
}

QString CBatchRoad::earlierCellFile() const
{
    const QString strOwn = QStringLiteral(".uc");
    for (const QString& strFolder : {m_dataSet.m_strProjectDir, m_strInputDir}) {
        for (const QString& strName : {m_dataSet.m_strProjectName + strOwn, QStringLiteral("unitcell.txt")}) {
            const QString strFile = strFolder + QLatin1Char('/') + strName;
            if (QFileInfo::exists(strFile)) {
                return strFile;
            }
        }
    }
    return resultBase() + strOwn;
}

bool CBatchRoad::loadCell(const QString& strFileName)
{
    QString strReason;
    const QList<Vec3D> listCell = readUnitCellFile(strFileName, &strReason);
    if (listCell.isEmpty()) {
        m_report.addMessage(
            QStringLiteral("Error occured when loading %1 as unit cell data.").arg(strFileName),
            Severity::Error);
        return fail(strReason);
    }
    m_dataSet.m_listCellFound = listCell;
    updateUnitCell(m_dataSet);
    m_report.addMessage(QStringLiteral("Unit cell loaded from %1.").arg(strFileName), Severity::Info);
    return true;
}

void CBatchRoad::roundParameters()
{
    roundToPages(m_dataSet);
    roundToPages(m_options.hunting);
    roundToPages(m_mapping);
    roundToPages(m_options.merging);
    roundToPages(m_options.cell);
    roundToPages(m_options.indexing);
    roundToPages(m_options.refinement);
}

bool CBatchRoad::runStage(BatchStage stage)
{
    switch (stage) {
        case BatchStage::Shifts:
            return runShifts();
        case BatchStage::Peaks:
            return runPeaks();
        case BatchStage::Merge:
            return runMerge();
        case BatchStage::Cell:
            return runCell();
        case BatchStage::Index:
            return runIndex();
        case BatchStage::Refine:
            return runRefine();
    }
    return false;
}

bool CBatchRoad::runShifts()
{
    QRect rcRegion;
    if (m_options.rcRegion) {
        rcRegion = *m_options.rcRegion;
    } else if (!findBeamRegion(m_dataSet, m_report, rcRegion, jobs())) {
        return false;
    }
    const QString strFile = resultBase() + QStringLiteral(".sc");
    const FileStamp stamp = FileStamp::of(strFile);
    ShiftEvaluationOptions options;
    options.bKeepPartial = false;
    options.nJobs = jobs();
    if (!runShiftEvaluation(m_dataSet, QRectF(rcRegion), m_report, options)) {
        return fail(QStringLiteral("Shift evaluation did not reach the last frame; nothing was written."));
    }
    if (!written(stamp, strFile)) {
        return false;
    }
    if (m_options.dfCenterX || m_options.dfCenterY) {
        takeOver(m_options.dfCenterX, m_dataSet.m_dfCenterX);
        takeOver(m_options.dfCenterY, m_dataSet.m_dfCenterY);
        if (!writeShifts(strFile)) {
            return false;
        }
    }
    double dfMaximum = 0;
    for (const QPointF& ptShift : m_dataSet.m_listShift) {
        dfMaximum = std::max({dfMaximum, std::abs(ptShift.x()), std::abs(ptShift.y())});
    }
    m_summary[QStringLiteral("region")] = QJsonArray{rcRegion.x(), rcRegion.y(), rcRegion.width()};
    m_summary[QStringLiteral("centre")] = QJsonArray{m_dataSet.m_dfCenterX, m_dataSet.m_dfCenterY};
    m_summary[QStringLiteral("maxShift")] = dfMaximum;
    QJsonArray arrayJump;
    for (int nFrame : findShiftJumps(m_dataSet.m_listShift, SHIFT_JUMP)) {
        m_report.addMessage(QStringLiteral("Warning: the shift of frame #%1, (%2, %3), stands apart from its "
                                           "neighbours.")
                                .arg(nFrame + 1)
                                .arg(m_dataSet.m_listShift[nFrame].x(), 0, 'f', 2)
                                .arg(m_dataSet.m_listShift[nFrame].y(), 0, 'f', 2),
                            Severity::Warning);
        arrayJump.append(nFrame + 1);
    }
    m_summary[QStringLiteral("shiftJumps")] = arrayJump;
    return true;
}

bool CBatchRoad::writeShifts(const QString& strFileName)
{
    QString strReason;
    if (!writeShiftFile(strFileName, {m_dataSet.m_dfCenterX, m_dataSet.m_dfCenterY, m_dataSet.m_listShift},
                        &strReason)) {
        return fail(strReason);
    }
    m_report.addMessage(
        QStringLiteral("Shift correction data with the given center saved to %1.").arg(strFileName));
    return true;
}

bool CBatchRoad::runPeaks()
{
    CPeakFilters filters;
    PeakHuntingParameters& parameters = m_options.hunting;
    if (m_options.dfPeakThreshold) {
        parameters.m_dfPeakThreshold = *m_options.dfPeakThreshold;
    }
    roundToPages(parameters);
    if (!m_options.dfPeakThreshold && !m_options.bWindowDefaults &&
        !estimatePeakThreshold(m_dataSet, parameters, filters, m_report, parameters.m_dfPeakThreshold, jobs(),
                               &parameters.m_dfFrameScale)) {
        return false;
    }
    const QString strFile = resultBase() + QStringLiteral(".pk");
    const FileStamp stamp = FileStamp::of(strFile);
    PeakHuntingOptions options;
    options.bSaveEmpty = false;
    options.nJobs = jobs();
    if (!runPeakHunting(m_dataSet, parameters, filters, m_report, options)) {
        return false;
    }
#ifdef __GLIBC__
    malloc_trim(0);  // the work images of the threads, which the heap would keep beside what follows
#endif
    const int nPeaks = countPeaks(m_dataSet.m_listPeakFrame);
    m_summary[QStringLiteral("peakThreshold")] = parameters.m_dfPeakThreshold;
    if (parameters.m_dfFrameScale != 1) {
        m_summary[QStringLiteral("frameScale")] = parameters.m_dfFrameScale;
    }
    m_summary[QStringLiteral("peaks")] = nPeaks;
    if (nPeaks == 0) {
        return fail(QStringLiteral("No peaks were found on any frame."));
    }
    return written(stamp, strFile);
}

int CBatchRoad::jobs() const
{
    return m_options.nJobs > 0 ? m_options.nJobs : int(std::max(1u, std::thread::hardware_concurrency()));
}

bool CBatchRoad::runMerge()
{
    // Limits that the user left alone let everything pass; beyond what the pages can show, so not rounded.
    if (!m_options.bWindowDefaults) {
        m_mapping.m_dfResolutionMin = 0;
        m_mapping.m_dfResolutionMax = NO_LIMIT;
        m_mapping.m_dfIntensityMin = -NO_LIMIT;
        m_mapping.m_dfIntensityMax = NO_LIMIT;
    }
    takeLimit(m_options.dfResolutionMin, m_mapping.m_dfResolutionMin);
    takeLimit(m_options.dfResolutionMax, m_mapping.m_dfResolutionMax);
    takeLimit(m_options.dfIntensityMin, m_mapping.m_dfIntensityMin);
    takeLimit(m_options.dfIntensityMax, m_mapping.m_dfIntensityMax);
    if (!transformPeaksTo3D(m_dataSet, m_mapping, m_report)) {
        return false;
    }
    showPeaksIn3D(m_dataSet, m_mapping);
    std::vector<char> vecFlag;
    if (m_options.nGroup >= 0) {
        vecFlag = flagsOfPeakGroup(m_dataSet, m_options.nGroup);
    }
    const PeakMergingResult result = peakReduction3D(m_dataSet, m_options.merging,
                                                     m_options.nGroup >= 0 ? &vecFlag : nullptr, m_report);
    if (!result.bFinished) {
        return false;
    }
    m_summary[QStringLiteral("peaksMerged")] = result.nPeaks;
    m_summary[QStringLiteral("peaksOutsideLimits")] = result.nOutsideLimits;
    m_summary[QStringLiteral("chains")] = m_dataSet.m_listPeakChain.size();
    m_summary[QStringLiteral("reflections")] = m_dataSet.m_listPeakMerged.size();
    if (m_dataSet.m_listPeakMerged.isEmpty()) {
        return fail(QStringLiteral("No reflections came out of the merging."));
    }
    return true;
}

bool CBatchRoad::runCell()
{
    const QString strFile = resultBase() + QStringLiteral(".uc");
    const FileStamp stamp = FileStamp::of(strFile);
    if (!m_options.strCellFile.isEmpty()) {
        QString strReason;
        if (!loadCell(m_options.strCellFile)) {
            return false;
        }
        if (!frameAmongTargets({strFile}, {m_options.strCellFile}).isEmpty()) {
            m_summary[QStringLiteral("cell")] = cellObject();
            return true;  // a run does not write what it reads
        }
        if (!saveUnitCellFile(m_dataSet, strFile, &strReason)) {
            return fail(strReason);
        }
    } else {
        const QList<Peak3D>& listMerged = m_dataSet.m_listPeakMerged;
        const bool bFound = m_options.bWindowDefaults
                                ? runUnitCellHunting(m_dataSet, listMerged, m_options.cell, m_report, true)
                                : runCheckedCellHunting(m_dataSet, listMerged, m_options.cell,
                                                        m_options.indexing.m_dfIndexThreshold, m_report,
                                                        true);
        if (!bFound) {
            return false;
        }
    }
    m_summary[QStringLiteral("cell")] = cellObject();
    return written(stamp, strFile);
}

bool CBatchRoad::runIndex()
{
    if (m_options.stageFrom > BatchStage::Cell && !m_options.strCellFile.isEmpty() &&
        !loadCell(m_options.strCellFile)) {
        return false;
    }
    // Before a start at a later stage the files of this one stay.
    const bool bWrite = m_options.stageFrom <= BatchStage::Index;
    m_options.indexing.m_bOutputIndexing = bWrite;
    QStringList listFile;
    for (const char* pszSuffix : {".hkl", ".p4p", ".ipf"}) {
        if (bWrite) {
            listFile.append(resultBase() + QLatin1String(pszSuffix));
        }
    }
    CFileSet files;
    const IndexingResult result = runIndexing(m_dataSet, m_dataSet.m_listPeakMerged, m_options.indexing,
                                              m_report, {}, &files);
    if (result.status != IndexingStatus::Finished) {
        return false;
    }
    QList<Peak3D> listWhole = result.listIndexed;
    for (Peak3D& peak : listWhole) {
        peak.setHKL(roundedIndex(peak.dfH), roundedIndex(peak.dfK), roundedIndex(peak.dfL));
    }
    const double dfShare = result.listSelection.isEmpty()
                               ? 0
                               : double(result.listIndexed.size()) / result.listSelection.size();
    m_summary[QStringLiteral("cell")] = cellObject();
    m_summary[QStringLiteral("indexed")] = result.listIndexed.size();
    m_summary[QStringLiteral("indexedShare")] = dfShare;
    m_summary[QStringLiteral("duplicated")] = result.listDuplicatedID.size();
    m_summary[QStringLiteral("unindexed")] = result.listUnindexedID.size();
    m_summary[QStringLiteral("onEdge")] = result.listOnEdgeID.size();
    refineCell(listWhole);
    reportCentreOffset(result);
    reportRotationSense(result.listIndexed);
    if (!holdsIndexed(result.listIndexed)) {
        return fail(
            QStringLiteral("No reflection was indexed; the files of the stage are as they were before."));
    }
    if (dfShare < SHARE_EXPECTED) {
        m_report.addMessage(
            QStringLiteral("Warning: only %1 of %2 reflections (%3%) were indexed; axis, beam, "
                           "pixel size or cell may be wrong.")
                .arg(result.listIndexed.size())
                .arg(result.listSelection.size())
                .arg(100 * dfShare, 0, 'f', 1),
            Severity::Error);
    }
    for (const QString& strFile : listFile) {
        if (files.reason().isEmpty() && !files.holds(strFile)) {
            return fail(QStringLiteral("%1 was not written; the files of the stage are as they were before.")
                            .arg(strFile));
        }
    }
    QString strReason;
    if (!files.commit(&strReason)) {
        return fail(QStringLiteral("%1; the files of the stage are as they were before.").arg(strReason));
    }
    return true;
}

void CBatchRoad::reportRotationSense(const QList<Peak3D>& listIndexed)
{
    const std::optional<RotationSense> sense = judgeRotationSense(listIndexed, m_dataSet);
    if (sense && sense->bOpposite) {
        m_report.addMessage(
            QStringLiteral(
                "Warning: the rotation seems to go the other way, and the indices to be those of the mirror "
                "image: turned round they fit the tilts of the reflections with a sum of squares of %1 "
                "degrees² instead of %2. Add 180 to the rotation axis and see whether this line goes.")
                .arg(sense->dfSquaresAfter, 0, 'f', 1)
                .arg(sense->dfSquaresBefore, 0, 'f', 1),
            Severity::Warning);
    }
}

void CBatchRoad::choosePairLimits()
{
    RefinementParameters& parameters = m_options.refinement;
    if (!m_options.bWindowDefaults) {
        // A spot that hardly rises above its background leaves its fit to the background.
        parameters.m_dfRefineIntensityLow = medianIntensity(m_dataSet.m_vecPeakIndexedOnFrame);
        parameters.m_dfRefineIntensityHigh = NO_LIMIT;
        parameters.m_dfRefineDStarHigh = largestExtent(m_dataSet.m_vecPeakIndexedOnFrame) *
                                         m_dataSet.m_dfPixelSize;
        // Short vectors say little of the cell; of a small pattern some have to stay.
        parameters.m_dfRefineDStarLow = std::min(SHORTEST_PAIR, parameters.m_dfRefineDStarHigh / 3);
    }
    takeLimit(m_options.dfRefineIntensityLow, parameters.m_dfRefineIntensityLow, 1);
    takeLimit(m_options.dfRefineIntensityHigh, parameters.m_dfRefineIntensityHigh, 1);
    takeLimit(m_options.dfRefineDStarLow, parameters.m_dfRefineDStarLow, 3);
    takeLimit(m_options.dfRefineDStarHigh, parameters.m_dfRefineDStarHigh, 3);
    const auto inOrder = [this](double& dfLow, double& dfHigh, const char* pszWhat) {
        if (dfLow > dfHigh) {
            m_report.addMessage(
                QStringLiteral("Warning: the limits of %1 of the peak pairs are the wrong way "
                               "round; they are exchanged.")
                    .arg(QLatin1String(pszWhat)),
                Severity::Error);
            std::swap(dfLow, dfHigh);
        }
    };
    inOrder(parameters.m_dfRefineIntensityLow, parameters.m_dfRefineIntensityHigh, "the intensity");
    inOrder(parameters.m_dfRefineDStarLow, parameters.m_dfRefineDStarHigh, "d*");
}

// The same pairs with the positions as hunted and as fitted; nothing but log and summary tells the result.
bool CBatchRoad::runRefine()
{
    choosePairLimits();
    // The statistics of the indexing may have left another one.
    m_dataSet.m_spaceGroup.setSpaceGroup(m_options.indexing.m_nSpaceGroup);
    RefinementParameters& parameters = m_options.refinement;
    m_report.addMessage(
        QStringLiteral("Peak pairs: d* from %1 to %2 Å⁻¹, peaks of intensities from %3 to %4.")
            .arg(parameters.m_dfRefineDStarLow, 0, 'f', 3)
            .arg(parameters.m_dfRefineDStarHigh, 0, 'f', 3)
            .arg(limitText(parameters.m_dfRefineIntensityLow),
                 limitText(parameters.m_dfRefineIntensityHigh)));
    const struct {
        QString strKey, strName;
        bool bFit, bConstant;
    } aRun[] = {
        {QStringLiteral("wholePixels"), QStringLiteral("peak pairs at hunted positions"), false, false},
        {QStringLiteral("subPixels"), QStringLiteral("peak pairs at fitted positions"), true, false},
        {QStringLiteral("subPixelsConstant"),
         QStringLiteral("peak pairs at positions fitted beside a constant background"), true, true}};
    QJsonObject object{
        {QStringLiteral("dStar"), QJsonArray{parameters.m_dfRefineDStarLow, parameters.m_dfRefineDStarHigh}}};
    for (const auto& run : aRun) {
        if (run.bConstant && !m_options.bConstantBackground) {
            continue;
        }
        PositionRefinementOptions fit;
        fit.nJobs = jobs();
        fit.bConstantBackground = run.bConstant;
        parameters.m_bRefine2D = run.bFit;
        const DifferenceVectorRefinement found = runUnitCellRefinement(
            m_dataSet, parameters, m_report, [&](const QVector<QList<Peak3D>>& vecPeak) {
                return refinePeakPosition(m_dataSet, vecPeak, m_report, fit);
            });
        if (!found.refinement) {
            return fail(QStringLiteral("No cell came out of the %1: %2 pairs, %3 difference vectors.")
                            .arg(run.strName)
                            .arg(found.nPairs)
                            .arg(found.listDifference.size()));
        }
        m_report.addMessage(
            QStringLiteral("Cell from the %1: %2.")
                .arg(run.strName, cellText(found.refinement->cell, found.refinement->cellStdErr)),
            Severity::Milestone);
        if (9 * found.nGroupsRejected > found.listDifference.size()) {
            m_report.addMessage(
                QStringLiteral(
                    "Warning: %1 of %2 groups of pairs disagree; the %3 are not to be trusted. Try "
                    "--constant-background or a greater --refine-intensity-low.")
                    .arg(found.nGroupsRejected)
                    .arg(found.nGroupsRejected + found.listDifference.size())
                    .arg(run.strName),
                Severity::Error);
        }
        object[run.strKey] = pairsObject(found);
        m_summary[QStringLiteral("peakPairs")] = object;
    }
    return true;
}

void CBatchRoad::refineCell(const QList<Peak3D>& listIndexed)
{
    if (listIndexed.size() < 7) {
        m_report.addMessage(QStringLiteral("There aren't enough reflections for unit cell refinement."),
                            Severity::Error);
        return;
    }
    const std::optional<CellParameters> cell = cellParametersFromList(m_dataSet.m_listCell);
    if (!cell) {
        return;
    }
    const std::optional<CellRefinement> refinement = unitCellRefinement(listIndexed, *cell, m_report);
    if (!refinement) {
        return;
    }
    m_summary[QStringLiteral("refined")] = QJsonObject{
        {QStringLiteral("parameters"), toArray(refinement->cell)},
        {QStringLiteral("standardErrors"), toArray(refinement->cellStdErr)},
        {QStringLiteral("rmsDStar"), refinement->dfRmsAfter[0]}};
}

void CBatchRoad::reportCentreOffset(const IndexingResult& result)
{
    // A wrong beam itself keeps reflections from being indexed, and those that fit in spite of it tell
    // least of it; then all are asked.
    std::optional<CentreOffset> offset;
    QString strWhich = QStringLiteral("indexed");
    if (2 * result.listIndexed.size() >= result.listSelection.size()) {
        offset = fitCentreOffset(result.listIndexed, m_dataSet.m_dfPixelSize, m_dataSet.m_dfRotationAxis);
    }
    if (!offset) {
        strWhich = QStringLiteral("selected, not only the indexed,");
        offset = fitCentreOffset(result.listSelection, m_dataSet.m_dfPixelSize, m_dataSet.m_dfRotationAxis);
    }
    if (!offset) {
        m_report.addMessage(QStringLiteral("The reflections do not determine the direct beam."));
        return;
    }
    m_report.addMessage(QStringLiteral("The %1 reflections fit best with the direct beam moved by "
                                       "(%2, %3) pixels, err=(%4, %5).")
                            .arg(strWhich)
                            .arg(offset->dfX, 0, 'f', 2)
                            .arg(offset->dfY, 0, 'f', 2)
                            .arg(offset->dfErrorX, 0, 'f', 2)
                            .arg(offset->dfErrorY, 0, 'f', 2));
    if (offset->length() > 1 && offset->length() > 3 * offset->lengthError()) {
        m_report.addMessage(QStringLiteral("Warning: the direct beam may be wrong by more than one pixel."),
                            Severity::Warning);
    }
    m_summary[QStringLiteral("centreOffset")] = QJsonArray{offset->dfX, offset->dfY};
    m_summary[QStringLiteral("centreOffsetErrors")] = QJsonArray{offset->dfErrorX, offset->dfErrorY};
}

QJsonObject CBatchRoad::cellObject() const
{
    const std::optional<CellParameters> cell = cellParametersFromList(m_dataSet.m_listCell);
    if (!cell) {
        return {};
    }
    return {{QStringLiteral("parameters"), toArray(*cell)},
            {QStringLiteral("volume"), CCrystalParaCal(*cell).getVolume()}};
}

}  // namespace tessera
