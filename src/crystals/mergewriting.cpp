// Writing of what a merging of many crystals gives.
#include "crystals/crystalsjob.h"

#include "crystals/crystaltable.h"
#include "crystals/joblines.h"
#include "crystals/jobtrees.h"
#include "crystals/mergefile.h"
#include "crystals/mergerecord.h"
#include "crystals/mergereport.h"
#include "crystals/resultfolders.h"
#include "integration/integrationfiles.h"
#include "records/fileset.h"
#include "records/progress.h"
#include "records/runends.h"
#include "road/roadlog.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace tessera {

namespace {

StructureData dataOf(const CrystalsJobOptions& options, const CrystalsJobResult& result,
                     const CompoundGroup& compound)
{
    StructureOptions structure;
    structure.strName = compound.strName;
    structure.nCrystals = compound.usedCount();
    structure.formula = options.formula;
    structure.nUnits = options.nUnits;
    if (compound.known && !result.listKnown[size_t(compound.known->nKnown)].formula.isEmpty()) {
        structure.formula = result.listKnown[size_t(compound.known->nKnown)].formula;
    }
    const int nFirst = compound.merged.listSettled.front().nCrystal;
    structure.dfWavelength = result.listCrystal[size_t(nFirst)].dfWavelength;
    return structureData(compound.merged.result, structure);
}

/// The files of one group. @return why not; empty when they stand
QString writeGroup(const CrystalsJobOptions& options, const QString& strFolder, CRunReport& report,
                   CrystalsJobResult& result, CompoundGroup& compound)
{
    const QString strBase = strFolder + QLatin1Char('/') + compound.strName;
    IntegrationFiles files;
    QString strReason;
    if (!writeIntegrationFiles(compound.merged.result, dataOf(options, result, compound), strBase,
                               {options.strKnownCellsFile}, files, &strReason)) {
        return strReason;
    }
    for (const QString& strNote : files.listNote) {
        report.addMessage(strNote, Severity::Warning);
    }
    compound.listFile = files.listFile;
    if (!compound.merged.listJoint.empty()) {
        const QString strTree = strBase + mergeSuffix(MergeFile::Tree);
        if (!writeWholeFile(strTree, treeSvg(correlationTree(result, compound)), &strReason)) {
            return strReason;
        }
        compound.listFile.append(strTree);
    }
    result.listFile += compound.listFile;
    return {};
}

/// Files of earlier records that still stand and that this merging has not written.
QStringList filesOfEarlier(const QJsonObject& former, const QStringList& listWritten)
{
    QStringList list;
    for (const QJsonValue& file : former[QStringLiteral("files")].toArray()) {
        const QString strFile = file.toObject()[QStringLiteral("path")].toString();
        if (!listWritten.contains(strFile) && QFileInfo::exists(strFile)) {
            list.append(QFileInfo(strFile).fileName());
        }
    }
    return list;
}

/// Table, tree, report and log. @return why not; empty when they stand
QString writeCommon(const CrystalsJobOptions& options, const QString& strBase, const QJsonObject& former,
                    CRoadLog& log, CrystalsJobResult& result)
{
    const auto name = [&](MergeFile file) { return strBase + mergeSuffix(file); };
    CFileSet set;
    set.add(name(MergeFile::Crystals), crystalTable(result));
    QStringList listFile = {name(MergeFile::Crystals)};
    if (!result.groups.listJoint.empty()) {
        set.add(name(MergeFile::Tree), treeSvg(latticeTree(result, options.tolerance)));
        listFile.append(name(MergeFile::Tree));
    }
    set.add(name(MergeFile::Report), mergeReport(options, result));
    listFile << name(MergeFile::Report) << name(MergeFile::Log);
    result.listFile += listFile;
    const QStringList listEarlier = filesOfEarlier(former, result.listFile);
    if (!listEarlier.isEmpty()) {
        log.addMessage(QStringLiteral("Files of an earlier merging stand beside those of this one: %1.")
                           .arg(listEarlier.join(QStringLiteral(", "))),
                       Severity::Warning);
    }
    for (const QString& strLine : summaryOf(result)) {
        log.addMessage(strLine);
    }
    log.addMessage(QStringLiteral("Files: %1*, %2 of them; record %3.")
                       .arg(strBase)
                       .arg(result.listFile.size() + 1)
                       .arg(QFileInfo(name(MergeFile::Record)).fileName()));
    set.add(name(MergeFile::Log), (result.strLog + log.text()).toUtf8());
    QString strReason;
    return set.commit(&strReason) ? QString() : strReason;
}

bool isOutput(const QString& strFile, const QString& strBase)
{
    const QString strPlace = QFileInfo(strFile).canonicalFilePath();
    for (const MergeFile file :
         {MergeFile::Record, MergeFile::Crystals, MergeFile::Tree, MergeFile::Report, MergeFile::Log}) {
        if (!strPlace.isEmpty() && strPlace == QFileInfo(strBase + mergeSuffix(file)).canonicalFilePath()) {
            return true;
        }
    }
    return false;
}

}  // namespace

QString misplacedMerge(const CrystalsJobOptions& options)
{
    const QFileInfo folder(options.strOutFolder);
    const QString strBase = folder.absoluteFilePath() + QLatin1Char('/') + jobName(options);
    if (options.strOutFolder.isEmpty()) {
        return QStringLiteral("no folder is given for the files");
    }
    if (folder.exists() && !folder.isDir()) {
        return QStringLiteral("%1 is no folder").arg(options.strOutFolder);
    }
    if (holdsRuns(folder.absoluteFilePath())) {
        return QStringLiteral("%1 holds the results of a series: merged files want a folder of their own")
            .arg(options.strOutFolder);
    }
    if (!options.strKnownCellsFile.isEmpty() && isOutput(options.strKnownCellsFile, strBase)) {
        return QStringLiteral("%1, which would be written, is the file of known cells")
            .arg(options.strKnownCellsFile);
    }
    const QString strRecord = strBase + mergeSuffix(MergeFile::Record);
    if (QFileInfo::exists(strRecord) && QFileInfo(strRecord).size() > 0 &&
        readMergeRecord(strRecord).isEmpty()) {
        return QStringLiteral("%1 is there already and is no record of a merging").arg(strRecord);
    }
    return {};
}

RunOutcome writeMerged(const CrystalsJobOptions& options, CRunReport& report, CrystalsJobResult& result)
{
    const QString strMisplaced = misplacedMerge(options);
    if (!strMisplaced.isEmpty()) {
        return refuseRun(report, QStringLiteral("Nothing is written: %1.").arg(strMisplaced));
    }
    const QString strFolder = QDir::cleanPath(QFileInfo(options.strOutFolder).absoluteFilePath());
    if (!QDir().mkpath(strFolder)) {
        return failRun(report, QStringLiteral("The folder %1 cannot be made.").arg(strFolder));
    }
    CRoadLog log(report);
    const QString strBase = strFolder + QLatin1Char('/') + result.strName;
    const QString strRecord = strBase + mergeSuffix(MergeFile::Record);
    const QJsonObject former = readMergeRecord(strRecord);
    result.listFile.clear();
    CProgress progress(report, QStringLiteral("Files of groups %v/%m"), 0, int(result.listGroup.size()));
    for (size_t n = 0; n < result.listGroup.size(); ++n) {
        progress.set(int(n));
        if (!report.goOn()) {
            return {RunEnd::Stopped, {}};
        }
        const QString strReason = result.listGroup[n].isMerged()
                                      ? writeGroup(options, strFolder, log, result, result.listGroup[n])
                                      : QString();
        if (!strReason.isEmpty()) {
            return failRun(report, strReason);
        }
    }
    progress.end();
    QString strReason = writeCommon(options, strBase, former, log, result);
    if (strReason.isEmpty()) {
        static_cast<void>(writeWholeFile(
            strRecord, QJsonDocument(mergeRecord(options, result, former)).toJson(), &strReason));
        result.listFile.append(strRecord);
    }
    return strReason.isEmpty() ? RunOutcome() : failRun(report, strReason);
}

}  // namespace tessera
