// CWholeFile: writes result files whole or not at all.
#pragma once

#include <QByteArray>
#include <QString>

namespace tessera {

/// A file that is written under a temporary name and gets its own name when all of it is on the disk.
///
/// Every write, the flush to the disk and the close are checked. After the first failure all further calls
/// fail with the same reason, and a former file of the name stays as it was. Where the file system allows it,
/// the file has no name at all before commit(), so that a program that is killed leaves nothing behind.
/// Otherwise it has the final name with six more characters in the same folder, which no reader takes for a
/// result. A symbolic link stays, and the file that it leads to is replaced. What is no regular file, such as
/// a device or a pipe, is written to directly.
class CWholeFile {
public:
    CWholeFile() = default;
    /// Without commit() nothing remains of the file.
    ~CWholeFile();
    CWholeFile(const CWholeFile&) = delete;
    CWholeFile& operator=(const CWholeFile&) = delete;

    /// Opens the file; can be called once per object.
    /// @return false when the name is empty, when it is that of a folder or of a write-protected file, or
    ///         when no file can be made in the folder; reason() tells which
    bool open(const QString& strFileName);
    /// Appends bytes to the file.
    /// @return false when this or an earlier call has failed
    bool write(const void* pData, qint64 nBytes);
    /// Does the same.
    bool write(const QByteArray& bytes) { return write(bytes.constData(), bytes.size()); }
    /// Appends the content of another file.
    /// @return false when this or an earlier call has failed
    bool writeCopy(const QString& strFrom);
    /// Gives the file its name, or discards it when anything has failed.
    /// @param pstrReason  may be null; takes on failure the file's name and what is wrong
    bool commit(QString* pstrReason = nullptr);

    /// The name that open() was given.
    QString fileName() const { return m_strFileName; }
    /// The file's name and what has failed; empty as long as nothing has.
    QString reason() const { return m_strReason; }

private:
    friend class CFileSet;  // puts several files in place step by step

    bool openRemoval(const QString& strFileName);
    bool fail(const QString& strWhat);
    bool failBySystem();
    QByteArray newNameBeside() const;
    bool makeNamed();
    bool flush();
    bool giveName();
    bool copyToNamed();
    bool closeFile();
    bool moveAside();
    bool exchange(bool bHoldFormer = true);
    void goBack();
    void removeBeside();
    void discard();

    QString m_strFileName;
    QString m_strReason;
    QByteArray m_strPlace;     ///< the file itself, behind all links
    QByteArray m_strBeside;    ///< its name until it is in place; after exchange() that of the former file
    QByteArray m_strWaiting;   ///< folder for its temporary name; empty: the folder of the file
    int m_nFile = -1;          ///< descriptor of the file while it is written, else -1
    int m_nFormer = -1;        ///< descriptor of the former file while its name is removed, see exchange()
    bool m_bDirect = false;    ///< a device or a pipe
    bool m_bRemoval = false;   ///< exchange() takes the file away and puts none there
    bool m_bFlushed = false;   ///< all of it is on the disk
    bool m_bReplaced = false;  ///< exchange() has found a former file
};

/// Writes a file whole or not at all, as CWholeFile does.
/// @param pstrReason  may be null; takes on failure the file's name and what is wrong
[[nodiscard]] bool writeWholeFile(const QString& strFileName, const QByteArray& bytes,
                                  QString* pstrReason = nullptr);

}  // namespace tessera
