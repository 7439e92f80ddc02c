#include "batch/misplacedoutput.h"

#include "batch/standardoutput.h"
#include "dataset/dataset.h"
#include "dataset/opening.h"
#include "dataset/projectfile.h"
#include "dataset/serieschoicefile.h"
#include "frames/frametargets.h"
#include "frames/imageseries.h"
#include "frames/scaledframes.h"
#include "frames/smvexport.h"
#include "imagefiles/frameformats.h"
#include "reciprocal/volumeexport.h"
#include "records/formerfile.h"
#include "road/sections.h"

#include <QFileInfo>

#include <initializer_list>

namespace tessera {

namespace {

/// The outputs that would replace a file; devices and pipes are left out.
QStringList replacedFiles(const QStringList& listOutput)
{
    QStringList listFile;
    for (const QString& strFile : listOutput) {
        const QFileInfo info(strFile);
        const bool bKept = isStandardOutput(strFile) || (info.exists() && !info.isFile() && !info.isDir());
        if (!strFile.isEmpty() && !bKept) {
            listFile.append(strFile);
        }
    }
    return listFile;
}

/// Whether the run includes a stage.
bool writesStage(const RoadOptions& options, RoadStage stage)
{
    return !options.exports.bOnly && options.stageFrom <= stage && stage <= options.stageTo;
}

/// A data set with the names and frames that the series will have once it is opened.
DataSet placesOf(const RoadOptions& options)
{
    DataSet dataSet;
    const QFileInfo first(options.listInput.first());
    dataSet.m_strProjectDir = first.absolutePath();
    dataSet.m_strProjectName = options.strSeriesName.isEmpty() ? first.completeBaseName()
                                                               : options.strSeriesName;
    dataSet.m_listFrameFile = framesOfImageFiles(options.listInput);
    ProjectFile project;
    if (options.isProject()) {  // an unreadable project is reported when it is opened
        dataSet.m_listFrameFile = project.read(options.listInput.first()) ? project.frameFiles()
                                                                          : QStringList();
    }
    return dataSet;
}

QStringList filesOf(const DataSet& dataSet, std::initializer_list<ResultFile> listResult)
{
    QStringList listFile;
    for (const ResultFile file : listResult) {
        listFile.append(fileOfProject(dataSet, file));
    }
    return listFile;
}

/// The result files except the cell.
QStringList resultFiles(const RoadOptions& options, const DataSet& dataSet)
{
    QStringList listFile = filesOf(dataSet, {ResultFile::Log, ResultFile::Run});
    if (writesStage(options, RoadStage::Shifts)) {
        listFile += filesOf(dataSet, {ResultFile::Shifts});
    }
    if (writesStage(options, RoadStage::Peaks)) {
        listFile += filesOf(dataSet, {ResultFile::Peaks});
    }
    if (writesStage(options, RoadStage::Index)) {
        listFile += filesOf(dataSet, {ResultFile::Reflections, ResultFile::P4P, ResultFile::IndexedPeaks});
    }
    if (writesStage(options, RoadStage::Geometry)) {
        listFile += filesOf(dataSet,
                            {ResultFile::RefinedProject, ResultFile::RefinedCell, ResultFile::RefinedShifts});
    }
    if (writesStage(options, RoadStage::Integrate)) {  // the other files get another name if necessary
        listFile += filesOf(dataSet, {ResultFile::Integrated, ResultFile::Merged, ResultFile::Rejected});
    }
    return listFile;
}

QStringList exportFiles(const RoadOptions& options, const DataSet& dataSet)
{
    const ExportOptions& exports = options.exports;
    const QString strPictures = exports.strPictureFolder.isEmpty() ? dataSet.m_strProjectDir
                                                                   : exports.strPictureFolder;
    QStringList listFile;
    for (const QString& strFrame : dataSet.m_listFrameFile) {
        if (exports.listKind.contains(ExportKind::Smv)) {
            listFile.append(smvImageFile(dataSet.m_strProjectDir, strFrame));
        }
        if (exports.listKind.contains(ExportKind::Scaled)) {
            listFile.append(scaledFrameFile(strFrame));
        }
        if (exports.listKind.contains(ExportKind::Pictures)) {
            listFile.append(
                seriesPictureFile(strPictures, strFrame, QLatin1Char('.') + exports.strPictureFormat));
        }
    }
    if (exports.listKind.contains(ExportKind::Volume)) {
        listFile.append(reciprocalVolumeFile(dataSet));
    }
    listFile += sectionFiles(dataSet, exports.listSection);
    // Exports for other programs; their frames never have the path of a frame of the series.
    const std::initializer_list<std::pair<ExportKind, const char*>> listOther = {
        {ExportKind::Dials, ".expt"},
        {ExportKind::Dials, ".refl"},
        {ExportKind::Pets, ".pts"},
        {ExportKind::DynamicCif, "_dyn.cif_pets"}};
    for (const auto& [kind, pszEnding] : listOther) {
        if (exports.listKind.contains(kind)) {
            listFile.append(fileOfProject(dataSet, QLatin1String(pszEnding)));
        }
    }
    return listFile;
}

/// All files that any run of this series may read or write beside the frames.
QStringList sideFiles(const DataSet& dataSet)
{
    QStringList listFile = {dataSet.m_strProjectDir + QStringLiteral("/hotpixels.txt"),
                            seriesChoiceFile(fileOfProject(dataSet, QString()))};
    for (const ResultFile file : g_aResultFile) {
        listFile.append(fileOfProject(dataSet, file));
        if (!fixedName(file).isEmpty()) {
            listFile.append(dataSet.m_strProjectDir + QLatin1Char('/') + fixedName(file));
        }
    }
    for (const QString& strFile : filesOf(
             dataSet, {ResultFile::Shifts, ResultFile::Peaks, ResultFile::Reflections, ResultFile::P4P})) {
        listFile.append(nameOfKept(strFile));
    }
    return listFile;
}

/// Suffixes, without the dot, of files that cannot be a summary: frames, projects, masks, results.
QStringList suffixesOfOthers()
{
    QStringList listSuffix = frameSuffixes() + QStringList{"ed3d", "msk", "img"};
    for (const ResultFile file : g_aResultFile) {
        if (file != ResultFile::Log) {
            listSuffix.append(resultSuffix(file).mid(1));
        }
    }
    return listSuffix;
}

/// Checks the file of --json or --report.
/// @param strOption  the name of the option
/// @param strWhat    what the file is, for the message
/// @param listOwn    other files of the run
/// @return empty, or what is wrong
QString misplacedFile(const QString& strOption, const QString& strFile, const QString& strWhat,
                      const QStringList& listInput, const QStringList& listOwn)
{
    const QFileInfo info(strFile);
    const QString strText = QStringLiteral("%1 %2").arg(strOption, strFile);
    if (info.isDir()) {
        return QStringLiteral("%1: a folder, not a file").arg(strText);
    }
    if (!frameAmongTargets({strFile}, listInput).isEmpty()) {
        return QStringLiteral("%1 would overwrite an input file").arg(strText);
    }
    if (!frameAmongTargets({strFile}, listOwn).isEmpty()) {
        return QStringLiteral("%1 would overwrite another file of the run").arg(strText);
    }
    const bool bOther = suffixesOfOthers().contains(info.suffix().toLower()) ||
                        info.fileName().endsWith(resultSuffix(ResultFile::Run)) ||
                        info.fileName().endsWith(seriesChoiceFile(QString()));
    if (info.isFile() && bOther) {
        return QStringLiteral("%1 would overwrite a file that is, by its name, not a %2")
            .arg(strText, strWhat);
    }
    return {};
}

}  // namespace

QString misplacedOutput(const BatchOptions& batch)
{
    const RoadOptions& options = batch.road;
    DataSet dataSet = placesOf(options);
    QStringList listInput = options.listInput + dataSet.m_listFrameFile +
                            QStringList{dataSet.m_strProjectDir + QStringLiteral("/hotpixels.txt")};
    QStringList listOwn = sideFiles(dataSet);
    if (!options.strOutDir.isEmpty()) {
        dataSet.m_strProjectDir = QFileInfo(options.strOutDir).absoluteFilePath();
        listOwn += sideFiles(dataSet);
    }
    if (!options.strMaskFile.isEmpty()) {
        listInput.append(options.strMaskFile);
    }
    if (!options.strKnownCellFile.isEmpty()) {
        listInput.append(options.strKnownCellFile);
    }
    if (!options.strCalibrationFile.isEmpty()) {
        listInput.append(options.strCalibrationFile);
    }
    const QString& strSaved = options.strSaveCalibrationFile;
    if (!replacedFiles({strSaved}).isEmpty() &&
        !frameAmongTargets({strSaved}, listOwn + QStringList{batch.strJsonFile, batch.strReportFile})
             .isEmpty()) {
        return QStringLiteral("--save-calibration %1 would overwrite another file of the run").arg(strSaved);
    }
    QString strHit;
    if (writesStage(options, RoadStage::Cell)) {
        strHit = frameAmongTargets(replacedFiles(filesOf(dataSet, {ResultFile::Cell})), listInput);
    }
    if (!options.strCellFile.isEmpty()) {
        listInput.append(options.strCellFile);
    }
    const QStringList listTarget = replacedFiles(resultFiles(options, dataSet) +
                                                 exportFiles(options, dataSet) + QStringList{strSaved});
    if (strHit.isEmpty()) {
        strHit = frameAmongTargets(listTarget, listInput);
    }
    if (!strHit.isEmpty()) {
        return QStringLiteral("%1, which the run would write, is one of its input files").arg(strHit);
    }
    QString strError;
    if (!replacedFiles({batch.strJsonFile}).isEmpty()) {
        strError = misplacedFile(QStringLiteral("--json"), batch.strJsonFile, QStringLiteral("summary"),
                                 listInput, listTarget + listOwn);
    }
    if (strError.isEmpty() && isStandardOutput(batch.strReportFile)) {
        strError = QStringLiteral("--report -: give the name of a file");
    } else if (strError.isEmpty() && !replacedFiles({batch.strReportFile}).isEmpty()) {
        strError = misplacedFile(QStringLiteral("--report"), batch.strReportFile, QStringLiteral("report"),
                                 listInput, listTarget + listOwn + QStringList{batch.strJsonFile});
    }
    return strError;
}

}  // namespace tessera
