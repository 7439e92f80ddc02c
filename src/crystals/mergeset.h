// MergeSet: the files of a merging, all of them in the place of those of the earlier one, or none.
#pragma once

#include "crystals/crystalsjob.h"
#include "crystals/mergeplace.h"
#include "records/fileset.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace tessera {

/// Files wait in a hidden folder of the place until all are on the disk. commit() then puts a record there
/// that says "unfinished", next to it the files, takes away those of the earlier merging that have no
/// successor, and puts the record there last. Where one of these steps fails, those before it are undone. A
/// program that is killed among them leaves the record that says so, with which the next merging knows all
/// files of both and replaces them.
class CMergeSet {
public:
    /// @param place  taken; outlives this
    CMergeSet(const CMergePlace& place, const CrystalsJobOptions& options);
    ~CMergeSet();
    CMergeSet(const CMergeSet&) = delete;
    CMergeSet& operator=(const CMergeSet&) = delete;

    void add(const QString& strFile, const QByteArray& bytes);
    /// Has commit() take away what earlier mergings have written here and nobody changed, where this one
    /// writes nothing in its place. To be called when all files but the log and the record are added.
    /// @param former   the record that stands there, or an empty object
    /// @param listOwn  files that will be added yet
    void addRemovals(const QJsonObject& former, const QStringList& listOwn);
    const QStringList& removed() const { return m_listRemoved; }
    /// Files of earlier mergings that stay, as they were changed.
    const QStringList& kept() const { return m_listKept; }

    /// Objects with path, sha256 and size of each file that was added.
    const QJsonArray& files() const { return m_arrayFile; }
    /// Why a file could not be written; empty while none has failed.
    QString reason() const { return m_strReason; }

    /// @return why the former files stay; empty: all stand
    QString commit(const QString& strRecord, const QJsonObject& record, const QJsonObject& former);

private:
    const CrystalsJobOptions& m_options;
    const QString m_strFolder;
    const QString m_strWaiting;
    std::unique_ptr<CFileSet> m_pSet;
    QString m_strReason;
    QJsonArray m_arrayFile;
    QStringList m_listFile;
    QStringList m_listRemoved;
    QStringList m_listKept;
};

}  // namespace tessera
