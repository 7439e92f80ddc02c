#include "batch/optionrules.h"

#include "batch/optionreader.h"
#include "dataset/pagerounding.h"

#include <QDir>
#include <QFileInfo>

namespace tessera {

namespace {

/// What does not go with the input.
QString contradictionOfInput(const RoadOptions& o)
{
    if (o.listInput.isEmpty()) {
        return QStringLiteral("no project and no images given");
    }
    if (o.isProject() && o.listInput.size() > 1) {
        return QStringLiteral("one project at a time: %1 files given").arg(o.listInput.size());
    }
    if (o.isProject() && o.sizeFrame.isValid()) {
        return QStringLiteral("--size chooses among the frames of a folder; %1 is a project")
            .arg(o.listInput.first());
    }
    if (o.isProject() && (o.dfTiltStart || o.dfTiltStep)) {
        return QStringLiteral("--tilt-start and --tilt-step go with images; the project has its own tilts");
    }
    return {};
}

/// What does not go with a calibration, or with the stages that are run.
QString contradictionOfCalibration(const RoadOptions& o)
{
    const bool bCalibrated = !o.strCalibrationFile.isEmpty();
    if (bCalibrated && o.bFindAxis) {
        return QStringLiteral("--calibration gives the axis: it cannot be combined with --axis auto");
    }
    if (!o.strSaveCalibrationFile.isEmpty() &&
        (o.exports.bOnly || o.stageFrom > RoadStage::Geometry || o.stageTo < RoadStage::Geometry)) {
        return QStringLiteral("--save-calibration needs the stage geometry");
    }
    if (o.stageTo < o.stageFrom) {
        return QStringLiteral("--to %1 is before --from %2")
            .arg(roadStageName(o.stageTo), roadStageName(o.stageFrom));
    }
    return {};
}

/// What does not go with a known cell, or with the range of a cell search.
QString contradictionOfCell(const RoadOptions& o)
{
    if (o.knownCell && !o.strCellFile.isEmpty()) {
        return QStringLiteral("--known-cell and --cell both give a cell: use one of them");
    }
    if (o.knownCell && o.cellMethod) {
        return QStringLiteral("--known-cell replaces the search: it cannot be combined with --cell-method");
    }
    if (o.knownCell && o.stageFrom > RoadStage::Cell) {
        return QStringLiteral("--known-cell needs the stage cell: --from %1 starts after it")
            .arg(roadStageName(o.stageFrom));
    }
    // A limit that was not given is found from the spots, or is that of the page.
    CellHuntingParameters cell = o.cell;
    cell.m_dfCellRangeMin = o.dfCellRangeMin.value_or(cell.m_dfCellRangeMin);
    cell.m_dfCellRangeMax = o.dfCellRangeMax.value_or(cell.m_dfCellRangeMax);
    roundToPages(cell);
    const bool bRange = o.bWindowDefaults || (o.dfCellRangeMin && o.dfCellRangeMax);
    if (bRange && cell.m_dfCellRangeMin >= cell.m_dfCellRangeMax) {
        return QStringLiteral("--cell-min has to be below --cell-max");
    }
    return {};
}

/// Checks that lower limits of the peaks are below the upper ones. @return empty, or what is wrong
QString contradictionOfLimits(const RoadOptions& o)
{
    // A limit that was not given is that of the page, or does not exist.
    const MappingParameters page;
    const auto low = [&](const std::optional<double>& dfGiven, double dfPage) {
        return dfGiven.value_or(o.bWindowDefaults ? dfPage : -g_dfLarge);
    };
    const auto high = [&](const std::optional<double>& dfGiven, double dfPage) {
        return dfGiven.value_or(o.bWindowDefaults ? dfPage : g_dfLarge);
    };
    const struct {
        const char* pszName;
        double dfLow, dfHigh;
    } aLimit[] = {{"resolution", low(o.dfResolutionMin, page.m_dfResolutionMin),
                   high(o.dfResolutionMax, page.m_dfResolutionMax)},
                  {"intensity", low(o.dfIntensityMin, page.m_dfIntensityMin),
                   high(o.dfIntensityMax, page.m_dfIntensityMax)}};
    for (const auto& limit : aLimit) {
        if (limit.dfLow > limit.dfHigh) {
            return QStringLiteral("--%1-min %2 lies above --%1-max %3: no peak would be left")
                .arg(QLatin1String(limit.pszName))
                .arg(limit.dfLow)
                .arg(limit.dfHigh);
        }
    }
    return {};
}

/// What exports need and the run does not have.
QString contradictionOfExports(const RoadOptions& o)
{
    const ExportOptions& exports = o.exports;
    if (exports.bOnly && exports.isEmpty()) {
        return QStringLiteral("--export-only needs --export");
    }
    const bool bCell = exports.bOnly || o.stageTo >= RoadStage::Cell;
    if (!exports.listSection.empty() && !bCell) {
        return QStringLiteral("--sections needs a cell: run at least to the stage cell");
    }
    if (exports.listKind.contains(ExportKind::IndexedPeaks) &&
        (exports.bOnly || o.stageTo < RoadStage::Index)) {
        return QStringLiteral("--export ipf needs the stage index");
    }
    if (exports.listKind.contains(ExportKind::Dials) && (exports.bOnly || o.stageTo < RoadStage::Index)) {
        return QStringLiteral("--export dials needs the stage index");
    }
    if (exports.listKind.contains(ExportKind::DynamicCif) &&
        (exports.bOnly || o.stageTo < RoadStage::Integrate)) {
        return QStringLiteral("--export cif needs the stage integrate");
    }
    const bool bMerged = !exports.bOnly && o.stageTo >= RoadStage::Merge;
    if (o.bFindAxis && !bMerged && exports.listKind.contains(ExportKind::Volume)) {
        return QStringLiteral("--export volume with --axis auto needs the stage merge, which finds the axis");
    }
    return {};
}

}  // namespace

QString contradiction(const RoadOptions& o)
{
    for (const auto fnCheck :
         {contradictionOfInput, contradictionOfCalibration, contradictionOfCell, contradictionOfLimits}) {
        const QString strError = fnCheck(o);
        if (!strError.isEmpty()) {
            return strError;
        }
    }
    if (o.intensities.nUnits > 0 && o.intensities.formula.isEmpty()) {
        return QStringLiteral("--formula-units needs --formula");
    }
    const QString strExports = contradictionOfExports(o);
    if (!strExports.isEmpty()) {
        return strExports;
    }
    if (o.nGroup >= 0 && o.stageFrom < RoadStage::Merge) {
        return QStringLiteral("--group selects from a peak list: it needs --from merge or a later stage");
    }
    return {};
}

QString whatImagesLack(const RoadOptions& o)
{
    if (o.isProject() || !o.facts) {
        return {};
    }
    const SeriesFacts& facts = *o.facts;
    const bool bCalibrated = !o.strCalibrationFile.isEmpty();
    QStringList listLacking, listOption;
    const auto need = [&](bool bThere, const char* pszWhat, const char* pszOption) {
        if (!bThere) {
            listLacking.append(QLatin1String(pszWhat));
            listOption.append(QLatin1String(pszOption));
        }
    };
    need(o.dfWavelength || bCalibrated || facts.wavelength.isTold(), "the wavelength", "--wavelength");
    need(o.dfPixelSize || bCalibrated || facts.pixelSize.isTold(), "the pixel size", "--pixel-size");
    // If all else is given, the step has its default, as the help says.
    const bool bAllGiven = bCalibrated ||
                           (o.dfWavelength && o.dfPixelSize && (o.dfRotationAxis || o.bFindAxis));
    need(o.dfTiltStep || bAllGiven || facts.tilts.isTold() || o.listInput.size() < 2, "the tilts",
         "--tilt-step");
    if (listLacking.isEmpty()) {
        return {};
    }
    const auto joined = [](QStringList list) {
        const QString strLast = list.takeLast();
        return list.isEmpty() ? strLast : list.join(QStringLiteral(", ")) + QStringLiteral(" and ") + strLast;
    };
    const QDir dir(QFileInfo(o.listInput.first()).absolutePath());
    const QStringList listProject = dir.entryList({QStringLiteral("*.ed3d")}, QDir::Files, QDir::Name);
    const QString strProject = listProject.isEmpty()
                                   ? QString()
                                   : QStringLiteral(" such as ") + dir.filePath(listProject.first());
    QString strText = QStringLiteral("the images do not give %1: use %2, or a project%3")
                          .arg(joined(listLacking), joined(listOption), strProject);
    for (const QString& strDoubt : facts.listDoubt) {  // a doubt may be the reason
        strText += QStringLiteral("\n  ") + strDoubt;
    }
    return strText;
}

}  // namespace tessera
