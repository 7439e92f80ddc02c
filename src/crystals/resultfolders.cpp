#include "crystals/resultfolders.h"

#include "crystals/mergefile.h"
#include "dataset/framefiles.h"
#include "records/resultfile.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>

#include <algorithm>

namespace tessera {

namespace {

const QString g_strRunSuffix = resultSuffix(ResultFile::Run);

bool holds(const QString& strFolder, const QString& strSuffix)
{
    return !QDir(strFolder).entryList({QLatin1Char('*') + strSuffix}, QDir::Files).isEmpty();
}

/// Each folder once, by its place behind all links.
class CFinder {
public:
    explicit CFinder(const QString& strOutFolder) : m_strOut(QFileInfo(strOutFolder).canonicalFilePath()) {}

    void find(const QString& strGiven)
    {
        const QFileInfo given(strGiven);
        const bool bRecord = given.isFile() && strGiven.endsWith(g_strRunSuffix);
        const QString strPlace = bRecord ? given.absolutePath() : strGiven;
        const QString strFolder = QFileInfo(strPlace).canonicalFilePath();
        const QString strFault = strGiven.isEmpty() ? QStringLiteral("It has no name.")
                                                    : faultOf(QFileInfo(strPlace));
        // A folder is reported under one name, however it was given.
        const QString strTold = strGiven.isEmpty() ? QStringLiteral("\"\"")
                                                   : QDir::cleanPath(given.absoluteFilePath());
        if (!strFault.isEmpty()) {
            m_mapFault[strTold] = strFault;
        } else if (holdsRuns(strFolder)) {
            m_mapTimes[strFolder] += bRecord ? 0 : 1;  // several records of one folder are no mistake
        } else if (strFolder == m_strOut || holds(strFolder, mergeSuffix(MergeFile::Record))) {
            m_listNote.append(
                QStringLiteral("%1 contains merged intensities, not those of a series: it is ignored.")
                    .arg(strTold));
        } else {
            search(strTold, strFolder);
        }
    }

    ResultFolders end()
    {
        ResultFolders folders;
        folders.listFolder = m_mapTimes.keys();
        std::stable_sort(folders.listFolder.begin(), folders.listFolder.end(), naturalLess);
        for (const QString& strFolder : folders.listFolder) {
            if (m_mapTimes[strFolder] > 1) {
                m_listNote.append(
                    QStringLiteral("%1 is given more than once: it is used once.").arg(strFolder));
            }
        }
        QStringList listFault = m_mapFault.keys();
        std::stable_sort(listFault.begin(), listFault.end(), naturalLess);
        for (const QString& strFault : listFault) {
            folders.listUnread.push_back({strFault, m_mapFault[strFault]});
        }
        m_listNote.removeDuplicates();
        std::stable_sort(m_listNote.begin(), m_listNote.end(), naturalLess);
        folders.listNote = m_listNote;
        return folders;
    }

private:
    static QString faultOf(const QFileInfo& info)
    {
        if (!info.exists()) {
            return QStringLiteral("There is no such folder.");
        }
        if (!info.isDir()) {
            return QStringLiteral("It is no folder.");
        }
        return info.isReadable() && info.isExecutable() ? QString()
                                                        : QStringLiteral("The folder may not be read.");
    }

    /// What was found beside folders of results may be a series that was lost.
    void tellWithout(const QString& strTold, const QFileInfoList& listWithout)
    {
        const int nMost = 10;
        for (const QFileInfo& info : listWithout.mid(0, nMost)) {
            const QString strFault = faultOf(info);
            m_mapFault[strTold + QLatin1Char('/') + info.fileName()] =
                strFault.isEmpty()
                    ? QStringLiteral("There is no record of a run (*%1) in it.").arg(g_strRunSuffix)
                    : strFault;
        }
        if (listWithout.size() > nMost) {
            m_mapFault[strTold] = QStringLiteral("%1 more folders in it have no record of a run.")
                                      .arg(listWithout.size() - nMost);
        }
    }

    void search(const QString& strTold, const QString& strFolder)
    {
        bool bAny = false;
        QFileInfoList listWithout;
        const QFileInfoList listInside = QDir(strFolder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot,
                                                                       QDir::Name);
        for (const QFileInfo& info : listInside) {
            const QString strInside = info.canonicalFilePath();
            if (!strInside.isEmpty() && holdsRuns(strInside)) {
                m_mapTimes[strInside] += 0;
                bAny = true;
            } else if (strInside != m_strOut && !holds(strInside, mergeSuffix(MergeFile::Record))) {
                listWithout.append(info);
            }
        }
        if (bAny) {
            tellWithout(strTold, listWithout);
        } else {
            m_mapFault[strTold] =
                QStringLiteral("There is no record of a run (*%1), neither in it nor in its subfolders.")
                    .arg(g_strRunSuffix);
        }
    }

    const QString m_strOut;
    QMap<QString, int> m_mapTimes;  ///< that a folder of results was named
    QMap<QString, QString> m_mapFault;
    QStringList m_listNote;
};

}  // namespace

bool holdsRuns(const QString& strFolder)
{
    return holds(strFolder, g_strRunSuffix);
}

ResultFolders findResultFolders(const QStringList& listGiven, const QString& strOutFolder)
{
    CFinder finder(strOutFolder);
    for (const QString& strGiven : listGiven) {
        finder.find(strGiven);
    }
    return finder.end();
}

}  // namespace tessera
