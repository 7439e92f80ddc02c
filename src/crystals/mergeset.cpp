#include "crystals/mergeset.h"

#include "crystals/mergerecord.h"
#include "road/filefacts.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace tessera {

namespace {

/// The check sums of each file in earlier records.
QMap<QString, QSet<QString>> sumsIn(const QJsonObject& former)
{
    QMap<QString, QSet<QString>> mapSums;
    for (const auto& record : generationsOf(former)) {
        for (const auto& value : record.toObject()[QStringLiteral("files")].toArray()) {
            const QJsonObject file = value.toObject();
            mapSums[file[QStringLiteral("path")].toString()].insert(
                file[QStringLiteral("sha256")].toString());
        }
    }
    return mapSums;
}

}  // namespace

CMergeSet::CMergeSet(const CMergePlace& place, const CrystalsJobOptions& options)
    : m_options(options),
      m_strFolder(place.folder()),
      m_strWaiting(place.folder() + QStringLiteral("/.tessera-merge.files"))
{
    // The waiting files of a killed merging are useless: the record, or the one before it, lists the files
    // that are in place.
    const QFileInfo left(m_strWaiting);
    if (left.isSymLink() || left.isFile()) {
        QFile::remove(m_strWaiting);
    } else if (left.isDir()) {
        QDir(m_strWaiting).removeRecursively();
    }
    if (!QDir().mkdir(m_strWaiting)) {
        m_strReason = QStringLiteral("The folder %1 cannot be made.").arg(m_strWaiting);
    }
    m_pSet = std::make_unique<CFileSet>(m_strWaiting);
}

CMergeSet::~CMergeSet()
{
    m_pSet.reset();  // what waits goes first
    QDir().rmdir(m_strWaiting);
}

void CMergeSet::add(const QString& strFile, const QByteArray& bytes)
{
    if (!m_strReason.isEmpty()) {
        return;
    }
    m_strReason = whyNoTarget(strFile, m_options);
    if (!m_strReason.isEmpty() || !m_pSet->add(strFile, bytes, &m_strReason)) {
        return;
    }
    const QByteArray bytesSum = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
    m_arrayFile.append(QJsonObject{{QStringLiteral("path"), strFile},
                                   {QStringLiteral("sha256"), QString::fromLatin1(bytesSum)},
                                   {QStringLiteral("size"), double(bytes.size())}});
    m_listFile.append(strFile);
}

void CMergeSet::addRemovals(const QJsonObject& former, const QStringList& listOwn)
{
    const QMap<QString, QSet<QString>> mapSums = sumsIn(former);
    QStringList listOld;
    for (auto it = mapSums.constBegin(); it != mapSums.constEnd(); ++it) {
        const QFileInfo info(it.key());
        const bool bReplaced = m_listFile.contains(it.key()) || listOwn.contains(it.key());
        if (!bReplaced && info.isFile() && info.path() == m_strFolder) {
            listOld.append(it.key());
        }
    }
    for (const FileFacts& facts : factsOfFiles(listOld, std::max(1, m_options.nJobs))) {
        const QFileInfo info(facts.strFile);
        const bool bUnchanged = mapSums[facts.strFile].contains(
            QString::fromLatin1(facts.bytesSha256.toHex()));
        if (!bUnchanged || info.isSymLink() || !info.isWritable()) {
            m_listKept.append(facts.strFile);
        } else if (m_strReason.isEmpty() && m_pSet->addRemoval(facts.strFile, &m_strReason)) {
            m_listRemoved.append(facts.strFile);
        }
    }
}

QString CMergeSet::commit(const QString& strRecord, const QJsonObject& record, const QJsonObject& former)
{
    if (m_strReason.isEmpty()) {
        m_strReason = whyNoTarget(strRecord, m_options);
    }
    if (m_strReason.isEmpty() &&
        m_pSet->addFirst(strRecord, QJsonDocument(unfinishedRecord(m_arrayFile, former)).toJson(),
                         &m_strReason) &&
        m_pSet->add(strRecord, QJsonDocument(record).toJson(), &m_strReason)) {
        m_pSet->commit(&m_strReason);
    }
    return m_strReason;
}

}  // namespace tessera
