#include "crystals/crystalsjob.h"

#include "crystals/groupcells.h"
#include "crystals/joblines.h"
#include "crystals/knowngroup.h"
#include "crystals/resultfolders.h"
#include "dataset/framefiles.h"
#include "imaging/sidebyside.h"
#include "records/availablememory.h"
#include "records/progress.h"
#include "records/resultfile.h"
#include "records/runends.h"
#include "road/filefacts.h"
#include "road/roadlog.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <thread>

namespace tessera {

namespace {

constexpr int g_nLongestCompound = 40;  // bytes, as g_nLongestJobName

/// The beginning of a text that has at most so many bytes in UTF-8. No character is cut in two.
QString cutTo(const QString& strText, int nBytes)
{
    const QByteArray bytes = strText.toUtf8();
    if (bytes.size() <= nBytes) {
        return strText;
    }
    int nEnd = nBytes;
    while (nEnd > 0 && (bytes.at(nEnd) & 0xC0) == 0x80) {  // 10xxxxxx: not the first byte of a character
        --nEnd;
    }
    return QString::fromUtf8(bytes.left(nEnd));
}

/// The name of a compound as a part of a file's name: what is no letter, number, "-", "+" or "." becomes "_".
QString fileNamePart(const QString& strText)
{
    QString str = strText.simplified();
    for (QChar& ch : str) {
        if (!ch.isLetterOrNumber() && !QStringLiteral("-+.").contains(ch)) {
            ch = QLatin1Char('_');
        }
    }
    return cutTo(str, g_nLongestCompound);
}

/// The threads that the options ask for.
int threadsOf(const CrystalsJobOptions& options)
{
    return options.nJobs > 0 ? options.nJobs : std::max(1, int(std::thread::hardware_concurrency()));
}

/// As many of these threads as the limits of the process have memory for.
/// @param report  that of the caller and not the log of the job, which is the same for any number of threads
int threadsInMemory(const CrystalsJobOptions& options, CRunReport& report)
{
    // Addresses for each thread: 8 MB for its stack, and the 64 MB that the heap of glibc reserves for it.
    // And 64 MB for the data on which all of them work.
    const std::uint64_t nEach = std::uint64_t(72) << 20, nShared = std::uint64_t(64) << 20;
    const std::uint64_t nLeft = memoryLeftByLimits();
    const int nWanted = threadsOf(options);
    // Threads beside that of the caller, which is there already.
    const std::uint64_t nMore = (nLeft - std::min(nLeft, nShared)) / nEach;
    const int nFit = int(std::min<std::uint64_t>(std::uint64_t(nWanted), 1 + nMore));
    if (nFit < nWanted) {
        report.addMessage(QStringLiteral("Within the limits of the process there is memory for %2 of %1 "
                                         "threads: the files are the same.")
                              .arg(nWanted)
                              .arg(nFit));
    }
    return nFit;
}

/// Keeps the lines of one group until all groups are merged, so that those of several threads do not mix.
/// Only the thread of the caller may ask the report whether to go on; the others learn it by a flag.
class CGroupReport : public CRunReport {
public:
    CGroupReport(CRunReport& report, std::atomic<bool>& bStop, std::thread::id caller)
        : m_report(report), m_bStop(bStop), m_caller(caller)
    {}
    void addMessage(const QString& strText, Severity severity) override
    {
        m_listLine.emplace_back(strText, severity);
    }
    bool goOn() override
    {
        if (std::this_thread::get_id() == m_caller && !m_report.goOn()) {
            m_bStop = true;
        }
        return !m_bStop;
    }
    const std::vector<std::pair<QString, Severity>>& lines() const { return m_listLine; }

private:
    CRunReport& m_report;
    std::atomic<bool>& m_bStop;
    const std::thread::id m_caller;
    std::vector<std::pair<QString, Severity>> m_listLine;
};

/// Reads the folders in several threads.
/// @return false when the report asked to stop
bool readAll(const QStringList& listFolder, int nJobs, CRunReport& report, CrystalsJobResult& result)
{
    std::vector<ReadCrystals> listRead(listFolder.size());
    CProgress progress(report, QStringLiteral("Results %v/%m"), 0, listFolder.size());
    std::atomic<int> nDone{0};
    const bool bAll = sideBySide(
        listFolder.size(), nJobs,
        [&]() -> FnPiece {
            return [&](int n) {
                listRead[n] = readCrystals({listFolder[n]});
                ++nDone;
            };
        },
        [&] {
            progress.set(nDone);
            return report.goOn();
        });
    progress.end();
    for (ReadCrystals& read : listRead) {
        std::move(read.listCrystal.begin(), read.listCrystal.end(), std::back_inserter(result.listCrystal));
        std::move(read.listUnread.begin(), read.listUnread.end(), std::back_inserter(result.listUnread));
    }
    return bAll;
}

QString fileOf(const Crystal& crystal, ResultFile file)
{
    return crystal.strFolder + QLatin1Char('/') + crystal.strName + resultSuffix(file);
}

/// Computes the check sums of the files that were read, and starts listFate with them. A crystal whose list
/// of intensities has the same bytes as that of an earlier one is a copy: it is moved to listUnread.
/// @return false when the report asked to stop
bool takeCheckSums(int nJobs, CRunReport& report, CrystalsJobResult& result)
{
    QStringList listFile;
    for (const Crystal& crystal : result.listCrystal) {
        listFile << fileOf(crystal, ResultFile::Integrated) << fileOf(crystal, ResultFile::Run);
    }
    // Two files of each crystal, in turn.
    const std::vector<FileFacts> listFacts = factsOfFiles(listFile, nJobs,
                                                          [&](int) { return report.goOn(); });
    std::vector<Crystal> listKept;
    QMap<QByteArray, QString> mapFirst;  // the record of the first crystal with a check sum
    for (size_t n = 0; n < result.listCrystal.size(); ++n) {
        Crystal& crystal = result.listCrystal[n];
        const QByteArray bytesHash = listFacts[2 * n].bytesSha256.toHex();
        const auto itFirst = mapFirst.constFind(bytesHash);
        // A list that cannot be read has no hash, and is a copy of none.
        if (!bytesHash.isEmpty() && itFirst != mapFirst.constEnd()) {
            result.listUnread.push_back(
                {fileOf(crystal, ResultFile::Run),
                 QStringLiteral("Its intensities are those of %1, byte for byte: they are used once.")
                     .arg(*itFirst)});
            continue;
        }
        mapFirst.insert(bytesHash, fileOf(crystal, ResultFile::Run));
        CrystalFate fate;
        fate.bytesSha256 = bytesHash;
        fate.bytesRecordSha256 = listFacts[2 * n + 1].bytesSha256.toHex();
        result.listFate.push_back(fate);
        listKept.push_back(std::move(crystal));
    }
    result.listCrystal = std::move(listKept);
    return report.goOn();
}

/// Notes for each crystal of a group what became of it. The reasons are given from the general to the
/// particular: what mergeCrystals() says of a crystal replaces the sentences given before.
void takeFates(CrystalsJobResult& result, size_t nGroup)
{
    CompoundGroup& compound = result.listGroup[nGroup];
    for (const int nMember : compound.group.listMember) {
        CrystalFate& fate = result.listFate[nMember];
        fate.nGroup = int(nGroup);
        fate.strReason = compound.isMerged()
                             ? QStringLiteral("It could not be brought to the setting of its group.")
                             : compound.outcome.strReason;
    }
    for (size_t n = 0; n < compound.merged.listSettled.size(); ++n) {
        CrystalFate& fate = result.listFate[size_t(compound.merged.listSettled[n].nCrystal)];
        fate.nSettled = int(n);
        fate.bUsed = compound.merged.listUsed[n] != 0;
        fate.strReason = fate.bUsed ? QString() : QStringLiteral("It was left out.");
    }
    for (const LeftOutCrystal& left : compound.merged.listLeftOut) {
        result.listFate[left.nCrystal].strReason = left.strReason;
    }
}

/// The name of a group's files: NAME_1, or NAME_1_quartz for a known compound.
QString nameOfGroup(const CrystalsJobResult& result, const CompoundGroup& compound, size_t nGroup)
{
    QString strName = QStringLiteral("%1_%2").arg(result.strName, QString::number(nGroup + 1));
    if (compound.known) {
        const QString strWord = fileNamePart(result.listKnown[compound.known->nKnown].strName);
        strName += strWord.isEmpty() ? QString() : QLatin1Char('_') + strWord;
    }
    return strName;
}

/// Groups the crystals by their lattices, and compares each group with the known cells.
void groupCrystals(const CrystalsJobOptions& options, CrystalsJobResult& result)
{
    result.groups = groupByCell(result.listCrystal, options.tolerance);
    for (const int n : result.groups.listNoCell) {
        result.listFate[n].strReason = QStringLiteral("Its six numbers are not a valid cell.");
    }
    for (size_t n = 0; n < result.groups.listGroup.size(); ++n) {
        CompoundGroup compound;
        compound.group = result.groups.listGroup[n];
        takeMeanOfMembers(result, options.tolerance, compound);
        compound.known = matchKnownCell(compound.group.reference, result.listKnown, options.tolerance);
        compound.strName = nameOfGroup(result, compound, n);
        result.listGroup.push_back(std::move(compound));
    }
}

/// Merges the groups in several threads.
/// @return false when the report asked to stop
bool mergeGroups(const CrystalsJobOptions& options, CRunReport& report, CrystalsJobResult& result)
{
    std::atomic<bool> bStop{false};
    std::atomic<int> nDone{0};
    const int nGroups = int(result.listGroup.size());
    std::vector<CGroupReport> listReport(nGroups, CGroupReport(report, bStop, std::this_thread::get_id()));
    CProgress progress(report, QStringLiteral("Groups %v/%m"), 0, nGroups);
    const auto work = [&](int n) {
        CompoundGroup& compound = result.listGroup[n];
        CrystalMergeOptions merge = options.merge;
        // A group gets threads in proportion to its crystals, so that one large group has all of them and
        // many small groups, which are merged at the same time, have one each.
        merge.nJobs = std::max<int>(
            1, int(qint64(threadsOf(options)) * compound.crystalCount() / qint64(result.listCrystal.size())));
        if (compound.crystalCount() < options.nLeastCrystals) {
            compound.outcome = {RunEnd::Refused,
                                QStringLiteral("Groups of fewer than %1 crystals are not merged.")
                                    .arg(options.nLeastCrystals)};
        } else {
            RunResult<MergedCrystals> merged = mergeCrystals(result.listCrystal, compound.group, merge,
                                                             listReport[n]);
            compound.outcome = merged.outcome;
            compound.merged = std::move(merged.made).value_or(MergedCrystals());
        }
        if (compound.isMerged()) {
            takeConventionalCell(result, compound);
            // A space group that the user has given goes before that of the known compound.
            if (compound.known && options.merge.judgement.nSpaceGroup == 0) {
                preferKnownGroup(result.listKnown[compound.known->nKnown].strSpaceGroup,
                                 compound.merged.result, listReport[n]);
            }
        }
        ++nDone;
    };
    const bool bAll = sideBySide(
        nGroups, threadsOf(options), [&]() -> FnPiece { return work; },
        [&] {
            progress.set(nDone);
            return report.goOn();
        });
    progress.end();
    for (int n = 0; n < nGroups; ++n) {
        takeFates(result, size_t(n));
        for (const auto& [strLine, severity] : listReport[n].lines()) {
            report.addMessage(QStringLiteral("%1: %2").arg(result.listGroup[n].strName, strLine), severity);
        }
    }
    return bAll && !bStop;
}

/// Adds a note on each group whose crystals were measured at different wavelengths.
void noteWavelengths(CrystalsJobResult& result)
{
    for (const CompoundGroup& compound : result.listGroup) {
        double dfLeast = HUGE_VAL, dfMost = 0;
        for (const int n : compound.group.listMember) {
            dfLeast = std::min(dfLeast, result.listCrystal[n].dfWavelength);
            dfMost = std::max(dfMost, result.listCrystal[n].dfWavelength);
        }
        // One per cent is a difference of some 3 kV at 200 kV. Where a wavelength up to 300 kV was rounded to
        // four decimals, it is off by less.
        if (dfMost > 1.01 * dfLeast) {
            result.listNote.append(
                QStringLiteral("The crystals of %1 were measured at wavelengths from %2 to %3 Å: the files "
                               "give that of the first.")
                    .arg(compound.strName, QString::number(dfLeast), QString::number(dfMost)));
        }
    }
}

/// Reads the table of known cells, if there is one. Faulty lines become notes.
/// @return false where it cannot be read
bool takeKnownCells(const CrystalsJobOptions& options, CRunReport& report, CrystalsJobResult& result)
{
    if (options.strKnownCellsFile.isEmpty()) {
        return true;
    }
    QString strReason;
    const std::optional<KnownCells> known = readKnownCells(options.strKnownCellsFile, &strReason);
    if (!known) {
        report.fail(QStringLiteral("The known cells cannot be read. %1").arg(strReason));
        return false;
    }
    result.listKnown = known->listCell;
    for (const QString& strFault : known->listFault) {
        result.listNote.append(
            QStringLiteral("%1, %2: the line is left out.").arg(options.strKnownCellsFile, strFault));
    }
    return true;
}

/// Does the work of mergeFolders(), whose log is the report here.
RunOutcome computeMerged(const CrystalsJobOptions& options, CRunReport& report, CrystalsJobResult& result)
{
    result.strName = jobName(options);
    const RunOutcome stopped = {RunEnd::Stopped, {}};
    if (!takeKnownCells(options, report, result)) {
        return {RunEnd::Failed, report.reason()};
    }
    ResultFolders folders = findResultFolders(options.listFolder, options.strOutFolder);
    result.listUnread = std::move(folders.listUnread);
    result.listNote += folders.listNote;
    const bool bRead = readAll(folders.listFolder, threadsOf(options), report, result) &&
                       takeCheckSums(threadsOf(options), report, result);
    if (!bRead) {
        return stopped;
    }
    tellRead(folders.listFolder.size(), result, report);
    if (result.listCrystal.empty()) {
        report.fail(QStringLiteral("No folder contains intensities: there is nothing to merge."));
        return {RunEnd::Refused, report.reason()};
    }
    groupCrystals(options, result);
    noteWavelengths(result);
    if (!mergeGroups(options, report, result)) {
        return stopped;
    }
    tellGroups(result, report);
    if (result.mergedCount() == 0) {
        report.fail(QStringLiteral("No group of crystals could be merged."));
        return {RunEnd::Failed, report.reason()};
    }
    return {};
}

}  // namespace

int CompoundGroup::usedCount() const
{
    return int(std::count(merged.listUsed.begin(), merged.listUsed.end(), 1));
}

int CrystalsJobResult::mergedCount() const
{
    return int(std::count_if(listGroup.begin(), listGroup.end(),
                             [](const CompoundGroup& compound) { return compound.isMerged(); }));
}

int CrystalsJobResult::usedCount() const
{
    return int(
        std::count_if(listFate.begin(), listFate.end(), [](const CrystalFate& fate) { return fate.bUsed; }));
}

QString jobName(const CrystalsJobOptions& options)
{
    const QString strFolder =
        QDir(QDir::cleanPath(QFileInfo(options.strOutFolder).absoluteFilePath())).dirName();
    const QString strName = cutTo(options.strName.isEmpty() ? strFolder : options.strName, g_nLongestJobName);
    return strName.isEmpty() ? QStringLiteral("merged") : strName;
}

RunOutcome mergeFolders(const CrystalsJobOptions& options, CRunReport& report, CrystalsJobResult& result)
{
    result = {};
    CRoadLog log(report);
    CrystalsJobOptions fitting = options;
    fitting.nJobs = threadsInMemory(options, report);
    const RunOutcome outcome = computeMerged(fitting, log, result);
    result.strLog = log.text();
    report.noteReason(log.reason());
    return outcome;
}

}  // namespace tessera
