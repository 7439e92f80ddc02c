// CFileSet: result files that belong together, and so appear together or not at all.
#pragma once

#include "records/wholefile.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace tessera {

/// Files are added when their content is known and wait beside their places, already on the disk. commit()
/// puts them there one straight after the other, so that a program that is killed leaves one set, the former
/// or the new one. Without commit() nothing has happened.
class CFileSet {
public:
    /// Writes a file of the set, as writeWholeFile() would. A failure is one of the whole set.
    bool add(const QString& strFileName, const QByteArray& bytes, QString* pstrReason = nullptr);
    /// Adds a copy of the file `strFrom`.
    bool addCopy(const QString& strFrom, const QString& strFileName, QString* pstrReason = nullptr);
    /// Whether a file of this name has been added.
    bool holds(const QString& strFileName) const;
    /// Why the first file that failed could not be written, with its name; empty while none has.
    QString reason() const { return m_strReason; }
    /// Puts all files in place. If one cannot go there, those that already have go back.
    /// @param pstrReason  may be null; on failure the name of a file and what is wrong
    bool commit(QString* pstrReason = nullptr);

private:
    bool take(std::unique_ptr<CWholeFile> pFile, bool bWritten, QString* pstrReason);

    std::vector<std::unique_ptr<CWholeFile>> m_vecFile;
    QString m_strReason;  ///< of the first file that failed
};

}  // namespace tessera
