// Writing of the results of a merging of many crystals.
#include "crystals/crystalsjob.h"

#include "crystals/crystaltable.h"
#include "crystals/joblines.h"
#include "crystals/jobtrees.h"
#include "crystals/mergefile.h"
#include "crystals/mergeplace.h"
#include "crystals/mergerecord.h"
#include "crystals/mergereport.h"
#include "crystals/mergeset.h"
#include "integration/integrationfiles.h"
#include "records/progress.h"
#include "records/runends.h"

#include <QFileInfo>

#include <utility>
#include <vector>

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
    if (compound.known && !result.listKnown[compound.known->nKnown].formula.isEmpty()) {
        structure.formula = result.listKnown[compound.known->nKnown].formula;
    }
    const int nFirst = compound.merged.listSettled.front().nCrystal;
    structure.dfWavelength = result.listCrystal[nFirst].dfWavelength;
    return structureData(compound.merged.result, structure);
}

/// Keeps the messages of the writing until all files are in place.
class CLaterReport : public CRunReport {
public:
    void addMessage(const QString& strText, Severity severity = Severity::Info) override
    {
        m_listLine.emplace_back(strText, severity);
    }
    QString text() const
    {
        QString strText;
        for (const auto& line : m_listLine) {
            strText += line.first + QLatin1Char('\n');
        }
        return strText;
    }
    void tell(CRunReport& report) const
    {
        for (const auto& [strLine, severity] : m_listLine) {
            report.addMessage(strLine, severity);
        }
    }

private:
    std::vector<std::pair<QString, Severity>> m_listLine;
};

void addGroup(const CrystalsJobOptions& options, const QString& strFolder, CRunReport& report,
              CrystalsJobResult& result, CompoundGroup& compound, CMergeSet& set)
{
    const QString strBase = strFolder + QLatin1Char('/') + compound.strName;
    const IntegrationFiles files = makeIntegrationFiles(
        compound.merged.result, dataOf(options, result, compound), strBase, {options.strKnownCellsFile},
        ObservedOn::Crystals,
        [&set](const QString& strFile, const QByteArray& bytes) { set.add(strFile, bytes); });
    for (const QString& strNote : files.listNote) {
        report.addMessage(strNote, Severity::Warning);
    }
    compound.listFile = files.listFile;
    if (!compound.merged.listJoint.empty()) {
        const QString strTree = strBase + mergeSuffix(MergeFile::Tree);
        set.add(strTree, treeSvg(correlationTree(result, compound)));
        compound.listFile.append(strTree);
    }
    result.listFile += compound.listFile;
}

/// Names of files without their folder; of many the first ones alone.
QString namesOf(const QStringList& listFile)
{
    const int nMost = 10;
    QStringList listName;
    for (const QString& strFile : listFile.mid(0, nMost)) {
        listName.append(QFileInfo(strFile).fileName());
    }
    if (listFile.size() > nMost) {
        listName.append(QStringLiteral("and %1 more").arg(listFile.size() - nMost));
    }
    return listName.join(QStringLiteral(", "));
}

/// Adds table, tree, report and log. The log includes the messages that appear after the files are in place.
void addCommon(const CrystalsJobOptions& options, const QString& strBase, const QJsonObject& former,
               CLaterReport& later, CrystalsJobResult& result, CMergeSet& set)
{
    const auto name = [&](MergeFile file) { return strBase + mergeSuffix(file); };
    const QByteArray bytesReport = mergeReport(options, result, set.files());
    set.add(name(MergeFile::Crystals), crystalTable(result));
    result.listFile.append(name(MergeFile::Crystals));
    if (!result.groups.listJoint.empty()) {
        set.add(name(MergeFile::Tree), treeSvg(latticeTree(result, options.tolerance)));
        result.listFile.append(name(MergeFile::Tree));
    }
    set.add(name(MergeFile::Report), bytesReport);
    result.listFile << name(MergeFile::Report) << name(MergeFile::Log);
    set.addRemovals(former, {name(MergeFile::Log), name(MergeFile::Record)});
    if (former[QStringLiteral("unfinished")].toBool()) {
        later.addMessage(QStringLiteral("The earlier merging was interrupted while it moved its files into "
                                        "place: its files are replaced."),
                         Severity::Warning);
    }
    if (!set.removed().isEmpty()) {
        later.addMessage(
            QStringLiteral("Files of an earlier merging that are not replaced by new ones are removed: %1.")
                .arg(namesOf(set.removed())));
    }
    if (!set.kept().isEmpty()) {
        later.addMessage(QStringLiteral("Files of an earlier merging remain beside those of this one: %1.")
                             .arg(namesOf(set.kept())),
                         Severity::Warning);
    }
    for (const QString& strLine : summaryOf(result)) {
        later.addMessage(strLine);
    }
    later.addMessage(QStringLiteral("Files: %1*, %2 of them; record %3.")
                         .arg(strBase, QString::number(result.listFile.size() + 1),
                              QFileInfo(name(MergeFile::Record)).fileName()));
    set.add(name(MergeFile::Log), (result.strLog + later.text()).toUtf8());
}

/// @return false when the report asked to stop
bool addGroups(const CrystalsJobOptions& options, const QString& strFolder, CRunReport& report,
               CRunReport& later, CrystalsJobResult& result, CMergeSet& set)
{
    CProgress progress(report, QStringLiteral("Files of groups %v/%m"), 0, int(result.listGroup.size()));
    for (size_t n = 0; n < result.listGroup.size() && set.reason().isEmpty(); ++n) {
        progress.set(int(n));
        if (!report.goOn()) {
            return false;
        }
        if (result.listGroup[n].isMerged()) {
            addGroup(options, strFolder, later, result, result.listGroup[n], set);
        }
    }
    progress.end();
    return true;
}

void forgetFiles(CrystalsJobResult& result)
{
    result.listFile.clear();
    for (CompoundGroup& compound : result.listGroup) {
        compound.listFile.clear();
    }
}

}  // namespace

RunOutcome writeMerged(const CrystalsJobOptions& options, const CMergePlace& place, CRunReport& report,
                       CrystalsJobResult& result)
{
    forgetFiles(result);
    const QString strBase = place.folder() + QLatin1Char('/') + result.strName;
    const QString strRecord = strBase + mergeSuffix(MergeFile::Record);
    const QJsonObject former = readMergeRecord(strRecord);
    CMergeSet set(place, options);
    CLaterReport later;
    if (!addGroups(options, place.folder(), report, later, result, set)) {
        forgetFiles(result);
        return {RunEnd::Stopped, {}};
    }
    QString strReason = set.reason();
    if (strReason.isEmpty()) {
        addCommon(options, strBase, former, later, result, set);
        strReason = set.commit(strRecord, mergeRecord(options, result, former, set.files(), set.removed()),
                               former);
    }
    if (!strReason.isEmpty()) {
        forgetFiles(result);
        return failRun(report, strReason);
    }
    result.listFile.append(strRecord);
    later.tell(report);
    return {};
}

}  // namespace tessera
