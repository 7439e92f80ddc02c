#include "road/stages.h"

#include "dataset/serieschoicefile.h"
#include "dataset/unitcellfile.h"
#include "records/fileset.h"
#include "road/calibrating.h"
#include "road/geometrytable.h"
#include "road/refinedproject.h"
#include "road/seriesgeometry.h"

#include <QFile>
#include <QFileInfo>

namespace tessera {

namespace {

/// Whether the name fits into the limit of file systems. If it does not, these files are not written.
bool hasRoomForName(const QString& strFile)
{
    const int nMost = 255;  // bytes, the limit of common file systems
    return QFile::encodeName(QFileInfo(strFile).fileName()).size() <= nMost;
}

/// Writes cell, project and shifts together; only the cell if a project file cannot represent the series.
StageResult writeRefined(RoadState& state, const GeometryModel& model, CRoadReport& report)
{
    const QString strProject = fileOfProject(state.dataSet, ResultFile::RefinedProject);
    const QString strCell = fileOfProject(state.dataSet, ResultFile::RefinedCell);
    const QString strShifts = fileOfProject(state.dataSet, ResultFile::RefinedShifts);
    if (!hasRoomForName(strProject)) {
        report.addMessage(
            QStringLiteral("No files of the refined geometry: the name of the series is too long."),
            Severity::Milestone);
        return {};
    }
    CFileSet files;
    QString strReason;
    const std::optional<QByteArray> bytesProject = refinedProjectText(state.dataSet, model, strProject,
                                                                      &strReason);
    if (bytesProject) {
        files.add(strProject, *bytesProject);
    } else {
        report.addMessage(QStringLiteral("No project file of the refined geometry: %1").arg(strReason),
                          Severity::Milestone);
    }
    files.add(strCell, unitCellText(basisOf(model.geometry)));
    if (bytesProject) {
        files.add(strShifts, shiftFileText(refinedShifts(state.dataSet, model)));
    }
    const QString strBase = QFileInfo(strProject).absolutePath() + QLatin1Char('/') +
                            QFileInfo(strProject).completeBaseName();
    const bool bKept = !bytesProject || keepSeriesChoice(strBase, state.dataSet.m_reading.choice, &strReason);
    if (!bKept || !files.commit(&strReason)) {
        return report.failed(
            QStringLiteral("%1; the files of the stage are as they were before.").arg(strReason));
    }
    const QStringList listFile = bytesProject ? QStringList{strProject, strCell, strShifts}
                                              : QStringList{strCell};
    report.addMessage(
        QStringLiteral("Refined geometry written: %1").arg(listFile.join(QStringLiteral(", "))));
    state.results.listFile += listFile;
    return {};
}

/// Writes the calibration of the microscope if that was requested.
StageResult saveCalibration(RoadState& state, const GeometryModel& model, CRoadReport& report)
{
    const QString& strFile = state.options.strSaveCalibrationFile;
    if (strFile.isEmpty()) {
        return {};
    }
    QString strReason;
    if (!writeCalibration(strFile, calibrationOfModel(state.dataSet, model, state.options.knownCell),
                          &strReason)) {
        return report.failed(strReason);
    }
    report.addMessage(QStringLiteral("Calibration written: %1").arg(strFile));
    state.results.listFile.append(strFile);
    return {};
}

}  // namespace

StageResult runGeometryStage(RoadState& state)
{
    beginStage(state, RoadStage::Geometry);
    CRoadReport& report = state.report;
    if (!cellInForce(state.dataSet)) {
        return report.failed(QStringLiteral("Unit cell is not ready."));
    }
    GeometryRefinementOptions options;
    options.listFixed = state.options.listFixedGeometry;
    if (state.results.lattice) {
        options.listConstraint = constraintsOf(state.results.lattice->listType);
    }
    GeometryRefinement& result = state.results.geometry.emplace(
        refineSeriesGeometry(state.dataSet, state.mapping, options, state.options.jobs(), report));
    if (!report.goOn()) {
        return report.ended({RunEnd::Stopped, {}});
    }
    if (!result.done()) {
        report.addMessage(QStringLiteral("The geometry stays as it is. %1").arg(result.strReason),
                          Severity::Milestone);
        if (!state.options.strSaveCalibrationFile.isEmpty()) {
            report.addMessage(QStringLiteral("Warning: no calibration is written."), Severity::Warning);
        }
        return {};
    }
    for (const QString& strLine : geometryTable(result)) {
        report.addMessage(strLine);
    }
    state.dataSet.m_made.geometry = madeWithGeometry(state.dataSet);
    // If the road starts at a later stage, the files of this stage are not replaced.
    const bool bWrite = state.options.stageFrom <= RoadStage::Geometry;
    const StageResult written = bWrite ? writeRefined(state, result.best(), report) : StageResult();
    return written.finished() ? saveCalibration(state, result.best(), report) : written;
}

}  // namespace tessera
