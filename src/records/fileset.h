// CFileSet: result files that belong together and are put in place all or none.
#pragma once

#include "records/wholefile.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace tessera {

/// A set of files to be written together.
///
/// Each file is written to the disk under a temporary name when it is added. commit() then renames them all
/// without any other work between, so that a program that is killed leaves either the former or the new set.
/// Without commit() the former files stay.
class CFileSet {
public:
    CFileSet() = default;
    /// @param strWaiting  a folder in that of the files, in which they wait, so that what a killed program
    /// has
    ///                    left is told from files of the user's. It has to be there
    explicit CFileSet(const QString& strWaiting) : m_strWaiting(strWaiting) {}

    /// Writes a file of the set, as writeWholeFile() would. A failure is one of the whole set.
    bool add(const QString& strFileName, const QByteArray& bytes, QString* pstrReason = nullptr);
    /// The same, but commit() begins with it. The same name may be added once more, for what stands there in
    /// the end.
    bool addFirst(const QString& strFileName, const QByteArray& bytes, QString* pstrReason = nullptr);
    /// Has commit() take a file away. It goes back with the others if one cannot go into its place.
    bool addRemoval(const QString& strFileName, QString* pstrReason = nullptr);
    /// Adds a copy of the file `strFrom`.
    bool addCopy(const QString& strFrom, const QString& strFileName, QString* pstrReason = nullptr);
    /// Whether a file of this name has been added.
    bool holds(const QString& strFileName) const;
    /// The name of the first file that could not be written, and why; empty while there is none.
    QString reason() const { return m_strReason; }
    /// Puts all files in place. If this fails for one of them, the former files are restored.
    /// @param pstrReason  may be null; takes on failure the name of a file and what is wrong
    bool commit(QString* pstrReason = nullptr);

private:
    std::unique_ptr<CWholeFile> newFile() const;
    bool take(std::unique_ptr<CWholeFile> pFile, bool bWritten, QString* pstrReason, bool bFirst = false);

    const QString m_strWaiting;
    std::vector<std::unique_ptr<CWholeFile>> m_vecFile;
    QString m_strReason;  ///< of the first failure
};

}  // namespace tessera
