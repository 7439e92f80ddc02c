#include "road/earlierfiles.h"

#include "dataset/peaklistfile.h"
#include "dataset/serieschoicefile.h"
#include "dataset/shiftfile.h"
#include "dataset/unitcellfile.h"
#include "reciprocal/cellcommit.h"

#include <QFileInfo>
#include <QRegularExpression>

namespace tessera {

namespace {

/// The message of opening about a file beside the project, preceded by a blank.
QString sideReason(const RoadState& state, const QString& strPattern)
{
    const QStringList listFound = state.listSideReason.filter(QRegularExpression(strPattern));
    return listFound.isEmpty() ? QString() : QLatin1Char(' ') + listFound.first();
}

/// The file that was read, either now or when the project was opened.
void noteRead(RoadState& state, ResultFile file)
{
    const DataSet& dataSet = state.dataSet;
    for (const QString& strFolder : {dataSet.m_strProjectDir, state.strInputDir}) {
        for (const QString& strName : {dataSet.m_strProjectName + resultSuffix(file), fixedName(file)}) {
            const QString strFile = strFolder + QLatin1Char('/') + strName;
            if (QFileInfo::exists(strFile)) {
                state.listEarlierFile.append(strFile);
                return;
            }
        }
    }
}

StageResult refuseOther(RoadState& state, const QString& strFile)
{
    return state.report.refused(
        QStringLiteral("%1 was made with another choice of frames, sums or bins; run its stage first, or "
                       "give --bin, --sum, --frames and --skip as they were.")
            .arg(strFile));
}

StageResult loadShifts(RoadState& state)
{
    DataSet& dataSet = state.dataSet;
    const QString strFile = fileOfProject(dataSet, ResultFile::Shifts);
    QString strReason;
    if (QFileInfo::exists(strFile) && !isMadeByChoice(strFile, dataSet.m_reading.choice)) {
        return refuseOther(state, strFile);
    }
    if (QFileInfo::exists(strFile) && loadShiftFile(dataSet, strFile, state.report, &strReason) == 0) {
        return state.report.failed(
            QStringLiteral("Error occured when loading %1 as shift data. %2").arg(strFile, strReason));
    }
    const int nFrames = dataSet.m_listFrameFile.size();
    if (state.options.stageTo >= RoadStage::Merge && dataSet.m_listShift.size() != nFrames) {
        return state.report.refused(
            QStringLiteral("No shift data for the %1 frames in %2 or %3; run the stage shifts first.%4")
                .arg(nFrames)
                .arg(dataSet.m_strProjectDir, state.strInputDir,
                     sideReason(state, QStringLiteral("\\.sc:|shifts\\.txt:|shift data"))));
    }
    noteRead(state, ResultFile::Shifts);
    return {};
}

StageResult loadPeaks(RoadState& state)
{
    DataSet& dataSet = state.dataSet;
    const QString strFile = fileOfProject(dataSet, ResultFile::Peaks);
    QString strReason;
    const bool bRead = state.strInputDir == dataSet.m_strProjectDir && state.options.isProject();
    if (!bRead && QFileInfo::exists(strFile) && !isMadeByChoice(strFile, dataSet.m_reading.choice)) {
        return refuseOther(state, strFile);
    }
    if (!bRead && QFileInfo::exists(strFile) &&
        readPeakList(dataSet, strFile, state.report, &strReason) == 0) {
        return state.report.failed(QStringLiteral("%1: no peaks loaded. %2").arg(strFile, strReason));
    }
    const int nFrames = dataSet.m_listFrameFile.size();
    if (dataSet.m_listPeakFrame.size() != nFrames) {
        return state.report.refused(
            QStringLiteral("No peak list for the %1 frames in %2 or %3; run the stage peaks first.%4")
                .arg(nFrames)
                .arg(dataSet.m_strProjectDir, state.strInputDir,
                     sideReason(state, QStringLiteral("\\.pk:|peaklist\\.txt:|Peak list"))));
    }
    noteRead(state, ResultFile::Peaks);
    return {};
}

QString earlierCellFile(const RoadState& state)
{
    const DataSet& dataSet = state.dataSet;
    for (const QString& strFolder : {dataSet.m_strProjectDir, state.strInputDir}) {
        for (const QString& strName :
             {dataSet.m_strProjectName + resultSuffix(ResultFile::Cell), fixedName(ResultFile::Cell)}) {
            const QString strFile = strFolder + QLatin1Char('/') + strName;
            if (QFileInfo::exists(strFile)) {
                return strFile;
            }
        }
    }
    return fileOfProject(dataSet, ResultFile::Cell);
}

void takeCentre(RoadState& state)
{
    takeOver(state.options.dfCenterX, state.dataSet.m_dfCenterX);
    takeOver(state.options.dfCenterY, state.dataSet.m_dfCenterY);
}

}  // namespace

StageResult loadEarlierStages(RoadState& state)
{
    const RoadOptions& options = state.options;
    const bool bOnlyExports = options.exports.bOnly;
    StageResult result;
    if (bOnlyExports ? options.exports.needsShifts() : options.stageFrom > RoadStage::Shifts) {
        result = loadShifts(state);
    }
    if (!result.finished()) {
        return result;
    }
    takeCentre(state);
    if (bOnlyExports) {
        const QString strCell = options.strCellFile.isEmpty() ? earlierCellFile(state) : options.strCellFile;
        return options.exports.listSection.empty() ? StageResult() : loadCell(state, strCell);
    }
    if (options.stageFrom > RoadStage::Peaks) {
        result = loadPeaks(state);
    }
    if (result.finished() && options.stageFrom > RoadStage::Cell && options.strCellFile.isEmpty()) {
        result = loadCell(state, earlierCellFile(state));
    }
    return result;
}

StageResult loadCell(RoadState& state, const QString& strFileName)
{
    QString strReason;
    const QList<Vec3D> listCell = readUnitCellFile(strFileName, &strReason);
    if (listCell.isEmpty()) {
        state.report.addMessage(
            QStringLiteral("Error occured when loading %1 as unit cell data.").arg(strFileName),
            Severity::Error);
        return state.report.failed(strReason);
    }
    state.listEarlierFile.append(strFileName);
    state.dataSet.m_listCellFound = listCell;
    updateUnitCell(state.dataSet);
    state.report.addMessage(QStringLiteral("Unit cell loaded from %1.").arg(strFileName), Severity::Info);
    return {};
}

}  // namespace tessera
