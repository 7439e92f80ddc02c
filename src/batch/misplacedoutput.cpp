#include "batch/misplacedoutput.h"

#include "batch/standardoutput.h"
#include "dataset/dataset.h"
#include "dataset/projectfile.h"
#include "frames/frametargets.h"
#include "frames/imageseries.h"
#include "frames/scaledframes.h"
#include "frames/smvexport.h"
#include "imagefiles/frameformats.h"
#include "reciprocal/volumeexport.h"

#include <QFileInfo>

#include <initializer_list>

namespace tessera {

namespace {

/// Those of some outputs that would be replaced: devices and pipes are written to.
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

bool writesStage(const BatchOptions& options, BatchStage stage)
{
    return !options.exports.bOnly && options.stageFrom <= stage && stage <= options.stageTo;
}

/// Names and frames as opening will have them.
DataSet placesOf(const BatchOptions& options)
{
    DataSet dataSet;
    const QFileInfo first(options.listInput.first());
    dataSet.m_strProjectDir = first.absolutePath();
    dataSet.m_strProjectName = first.completeBaseName();
    dataSet.m_listFrameFile = options.listInput;
    ProjectFile project;
    if (options.isProject()) {  // one that cannot be read fails when it is opened
        dataSet.m_listFrameFile = project.read(options.listInput.first()) ? project.frameFiles()
                                                                          : QStringList();
    }
    return dataSet;
}

QStringList filesOf(const DataSet& dataSet, std::initializer_list<const char*> listSuffix)
{
    QStringList listFile;
    for (const char* pszSuffix : listSuffix) {
        listFile.append(fileOfProject(dataSet, QLatin1String(pszSuffix)));
    }
    return listFile;
}

/// The results but for the cell.
QStringList resultFiles(const BatchOptions& options, const DataSet& dataSet)
{
    QStringList listFile = filesOf(dataSet, {".log"});
    if (writesStage(options, BatchStage::Shifts)) {
        listFile += filesOf(dataSet, {".sc"});
    }
    if (writesStage(options, BatchStage::Peaks)) {
        listFile += filesOf(dataSet, {".pk"});
    }
    if (writesStage(options, BatchStage::Index)) {
        listFile += filesOf(dataSet, {".hkl", ".p4p", ".ipf"});
    }
    return listFile;
}

QStringList exportFiles(const BatchOptions& options, const DataSet& dataSet)
{
    const BatchExports& exports = options.exports;
    const QString strPictures = exports.strPictureFolder.isEmpty() ? dataSet.m_strProjectDir
                                                                   : exports.strPictureFolder;
    QStringList listFile;
    for (const QString& strFrame : dataSet.m_listFrameFile) {
        if (exports.listKind.contains(QStringLiteral("smv"))) {
            listFile.append(smvImageFile(dataSet.m_strProjectDir, strFrame));
        }
        if (exports.listKind.contains(QStringLiteral("scaled"))) {
            listFile.append(scaledFrameFile(strFrame));
        }
        if (exports.listKind.contains(QStringLiteral("pictures"))) {
            listFile.append(
                seriesPictureFile(strPictures, strFrame, QLatin1Char('.') + exports.strPictureFormat));
        }
    }
    if (exports.listKind.contains(QStringLiteral("volume"))) {
        listFile.append(reciprocalVolumeFile(dataSet));
    }
    return listFile;
}

/// All files that runs on this series read or write beside the frames, whether this one does or not.
QStringList sideFiles(const DataSet& dataSet)
{
    QStringList listFile = filesOf(
        dataSet, {".log", ".sc", ".sc~", ".pk", ".pk~", ".uc", ".hkl", ".hkl~", ".p4p", ".p4p~", ".ipf"});
    for (const char* pszName : {"hotpixels.txt", "peaklist.txt", "shifts.txt", "unitcell.txt"}) {
        listFile.append(dataSet.m_strProjectDir + QLatin1Char('/') + QLatin1String(pszName));
    }
    return listFile;
}

QString misplacedSummary(const QString& strJson, const QStringList& listInput, const QStringList& listOwn)
{
    const QFileInfo info(strJson);
    if (info.isDir()) {
        return QStringLiteral("--json %1: a folder, not a file").arg(strJson);
    }
    if (!frameAmongTargets({strJson}, listInput).isEmpty()) {
        return QStringLiteral("--json %1 would overwrite an input file").arg(strJson);
    }
    if (!frameAmongTargets({strJson}, listOwn).isEmpty()) {
        return QStringLiteral("--json %1 would overwrite another file of the run").arg(strJson);
    }
    const QStringList listOther = frameSuffixes() +
                                  QStringList{"ed3d", "pk", "sc", "uc", "msk", "hkl", "p4p", "ipf", "img"};
    if (info.isFile() && listOther.contains(info.suffix().toLower())) {
        return QStringLiteral("--json %1 would overwrite a file that is, by its name, no summary")
            .arg(strJson);
    }
    return {};
}

}  // namespace

QString misplacedOutput(const BatchOptions& options)
{
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
    QString strHit;
    if (writesStage(options, BatchStage::Cell)) {
        strHit = frameAmongTargets(replacedFiles(filesOf(dataSet, {".uc"})), listInput);
    }
    if (!options.strCellFile.isEmpty()) {
        listInput.append(options.strCellFile);
    }
    const QStringList listTarget = replacedFiles(resultFiles(options, dataSet) +
                                                 exportFiles(options, dataSet));
    if (strHit.isEmpty()) {
        strHit = frameAmongTargets(listTarget, listInput);
    }
    if (!strHit.isEmpty()) {
        return QStringLiteral("%1, which the run would write, is one of its input files").arg(strHit);
    }
    if (replacedFiles({options.strJsonFile}).isEmpty()) {
        return {};
    }
    return misplacedSummary(options.strJsonFile, listInput, listTarget + listOwn);
}

}  // namespace tessera
