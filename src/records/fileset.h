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
    /// Adds a file with its content.
    /// @param pstrReason  may be null; takes on failure the file's name and what is wrong
    /// @return false on failure; commit() then fails, too
    bool add(const QString& strFileName, const QByteArray& bytes, QString* pstrReason = nullptr);
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
    bool take(std::unique_ptr<CWholeFile> pFile, bool bWritten, QString* pstrReason);

    std::vector<std::unique_ptr<CWholeFile>> m_vecFile;
    QString m_strReason;  ///< of the first failure
};

}  // namespace tessera
