#include "road/stages.h"

#include "dataset/unitcellfile.h"
#include "lattice/latticebasis.h"
#include "records/fileset.h"
#include "refinement/geometryofseries.h"
#include "road/finespots.h"
#include "road/geometrytable.h"
#include "road/refinedproject.h"

#include <QFile>
#include <QFileInfo>

namespace tessera {

namespace {

/// The Bravais types that the lattice fits, seen from the cell in force.
std::vector<CellConstraint> constraintsOf(const std::optional<LatticeAnalysis>& analysis)
{
    std::vector<CellConstraint> listConstraint;
    if (analysis) {
        for (const LatticeType& type : analysis->listType) {
            listConstraint.push_back({type.symmetry.system, type.matTransform, bravaisSymbol(type.symmetry)});
        }
    }
    return listConstraint;
}

ReciprocalBasis basisOf(const DiffractionGeometry& geometry)
{
    const auto vector = [&](size_t n) {
        const DoubleVector& vec = geometry.aBasis[n];
        return Vec3D{float(vec[0]), float(vec[1]), float(vec[2])};
    };
    return {vector(0), vector(1), vector(2)};
}

/// Whether file systems have room for the name; a series whose own name leaves none does without these files.
bool hasRoomForName(const QString& strFile)
{
    const int nMost = 255;  // bytes, of those that are in use
    return QFile::encodeName(QFileInfo(strFile).fileName()).size() <= nMost;
}

/// Writes cell, project and shifts together. A series that no project file can hold gets the cell alone.
StageResult writeRefined(const RoadState& state, const GeometryModel& model, CRoadReport& report)
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
    QByteArray bytesProject;
    QString strReason;
    if (makeRefinedProjectText(state.dataSet, model, strProject, bytesProject, &strReason)) {
        files.add(strProject, bytesProject);
    } else {
        report.addMessage(QStringLiteral("No project file of the refined geometry: %1").arg(strReason),
                          Severity::Milestone);
    }
    files.add(strCell, unitCellText(basisOf(model.geometry)));
    if (!bytesProject.isEmpty()) {
        files.add(strShifts, shiftFileText(refinedShifts(state.dataSet, model)));
    }
    if (!files.commit(&strReason)) {
        return report.failed(
            QStringLiteral("%1; the files of the stage are as they were before.").arg(strReason));
    }
    const QString strFiles = bytesProject.isEmpty()
                                 ? strCell
                                 : QStringList{strProject, strCell, strShifts}.join(QStringLiteral(", "));
    report.addMessage(QStringLiteral("Refined geometry written: %1").arg(strFiles));
    return {};
}

}  // namespace

StageResult runGeometryStage(RoadState& state)
{
    beginStage(state, RoadStage::Geometry);
    CRoadReport& report = state.report;
    const std::optional<DiffractionGeometry> start = geometryOfSeries(state.dataSet, state.mapping);
    if (!start) {
        return report.failed(QStringLiteral("Unit cell is not ready."));
    }
    GeometryRefinementOptions options;
    options.listConstraint = constraintsOf(state.results.lattice);
    options.listFixed = state.options.listFixedGeometry;
    options.nFrames = state.dataSet.m_listFrameFile.size();
    GeometryRefinement& result = state.results.geometry.emplace(
        refineGeometry(fineSpots(state.dataSet, state.options.jobs(), report), *start, options, report));
    if (!report.goOn()) {
        return report.ended({RunEnd::Stopped, {}});
    }
    if (!result.done()) {
        report.addMessage(QStringLiteral("The geometry stays as it is. %1").arg(result.strReason),
                          Severity::Milestone);
        return {};
    }
    for (const QString& strLine : geometryTable(result)) {
        report.addMessage(strLine);
    }
    return writeRefined(state, result.best(), report);
}

}  // namespace tessera
