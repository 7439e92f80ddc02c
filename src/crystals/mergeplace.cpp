#include "crystals/mergeplace.h"

#include "crystals/mergefile.h"
#include "crystals/mergerecord.h"
#include "crystals/resultfolders.h"
#include "records/sealedfile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace tessera {

namespace {

const int g_nMaxLinks = 40;  // Linux follows at most 40 symbolic links in a path

/// The absolute path of the folder for the files, without "." and "..".
QString folderOfJob(const CrystalsJobOptions& options)
{
    return QDir::cleanPath(QFileInfo(options.strOutFolder).absoluteFilePath());
}

/// The files and folders in the folder that have a name which the merging may write: those of the whole
/// merging, and those of a group, NAME_<number> with or without a name behind it.
QFileInfoList existingOutputs(const CrystalsJobOptions& options)
{
    static const QString strOfGroup = QStringLiteral(
        "_[0-9]+(_.*)?(_integrated\\.hkl|_merged\\.hkl|_rejected\\.csv|_tree\\.svg|\\.ins|\\.cif|\\.mtz)");
    const QRegularExpression name(QStringLiteral("^%1(_crystals\\.csv|_tree\\.svg|_report\\.html|\\.log|"
                                                 "\\.merge\\.json|%2)$")
                                      .arg(QRegularExpression::escape(jobName(options)), strOfGroup));
    QFileInfoList listFound;
    const QDir::Filters filters = QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot;
    for (const QFileInfo& info : QDir(folderOfJob(options)).entryInfoList(filters, QDir::Name)) {
        if (name.match(info.fileName()).hasMatch()) {
            listFound.append(info);
        }
    }
    return listFound;
}

/// The file itself that a chain of links leads to, whether it is there or not.
QFileInfo behindLinks(QFileInfo info)
{
    for (int n = 0; n < g_nMaxLinks && info.isSymLink(); ++n) {
        info = QFileInfo(info.symLinkTarget());
    }
    return info;
}

/// Whether strFolder is strOther or a folder in it.
bool isSameOrBelow(const QString& strFolder, const QString& strOther)
{
    return strFolder == strOther || strFolder.startsWith(strOther + QLatin1Char('/'));
}

/// Why an existing file cannot be replaced; empty if it can, or if another name will be used instead.
QString whyNotReplaced(const QFileInfo& info)
{
    // These have a check sum: one that was changed since stays, and the new one gets another name.
    const bool bSealed = QStringList{"ins", "cif", "mtz"}.contains(info.suffix());
    if (bSealed && (info.isDir() || !isFreeForSealed(info.filePath()))) {
        return {};
    }
    if (info.isDir()) {
        return QStringLiteral("%1, which would be written, is a folder").arg(info.filePath());
    }
    return info.exists() && !info.isWritable() ? QStringLiteral("%1 may not be replaced").arg(info.filePath())
                                               : QString();
}

/// Whether an existing file is one of those that the merging writes, except the files of its groups.
/// @param strBase  path and name of the merging, without a suffix
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

QString whyNoTarget(const QString& strFile, const CrystalsJobOptions& options)
{
    const QFileInfo link(strFile);
    if (!link.isSymLink()) {
        return {};
    }
    const QFileInfo target = behindLinks(link);
    const QString strFolder = QFileInfo(target.absolutePath()).canonicalFilePath();
    const QString strLeads =
        QStringLiteral("%1, which would be written, is a link to %2").arg(strFile, target.absoluteFilePath());
    if (!options.strKnownCellsFile.isEmpty() && target.exists() &&
        target.canonicalFilePath() == QFileInfo(options.strKnownCellsFile).canonicalFilePath()) {
        return strLeads + QStringLiteral(", the file of known cells");
    }
    if (strFolder.isEmpty() || strFolder == QFileInfo(options.strOutFolder).canonicalFilePath()) {
        return {};
    }
    bool bInput = holdsRuns(strFolder);
    for (const QString& strInput : options.listFolder) {
        const QString strPlace = QFileInfo(strInput).canonicalFilePath();
        bInput = bInput || (!strPlace.isEmpty() && isSameOrBelow(strFolder, strPlace));
    }
    return bInput ? strLeads + QStringLiteral(", in a folder that is to be merged or holds a series")
                  : QString();
}

// Declared in crystalsjob.h.
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
        return QStringLiteral("%1 exists and is not a record of a merging").arg(strRecord);
    }
    for (const QFileInfo& info : existingOutputs(options)) {
        const QString strReason = whyNoTarget(info.filePath(), options);
        if (!strReason.isEmpty()) {
            return strReason;
        }
    }
    return {};
}

CMergePlace::~CMergePlace()
{
    m_lock.remove();
    if (m_bMade) {
        QDir().rmdir(m_strFolder);  // fails, as it should, if there are files in it
    }
}

QString CMergePlace::take(const CrystalsJobOptions& options)
{
    const QString strMisplaced = misplacedMerge(options);
    if (!strMisplaced.isEmpty()) {
        return strMisplaced;
    }
    const QString strFolder = folderOfJob(options);
    const bool bThere = QFileInfo::exists(strFolder);
    if (!QDir().mkpath(strFolder) || !QFileInfo(strFolder).isWritable()) {
        return QStringLiteral("nothing can be written to %1").arg(options.strOutFolder);
    }
    m_strFolder = strFolder;
    m_bMade = !bThere;
    QString strReason;
    bool bHeld = false;
    if (!m_lock.take(strFolder + QStringLiteral("/.tessera-merge.lock"), &strReason, &bHeld)) {
        return bHeld ? QStringLiteral("another merging is writing to %1").arg(options.strOutFolder)
                     : strReason;
    }
    for (const QFileInfo& info : existingOutputs(options)) {
        strReason = whyNotReplaced(info);
        if (!strReason.isEmpty()) {
            m_lock.remove();  // a folder that is not written to is free for others
            return strReason;
        }
    }
    return {};
}

}  // namespace tessera
