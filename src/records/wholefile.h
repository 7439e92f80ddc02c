// Writing of result files, whole or not at all.
#pragma once

#include <QByteArray>
#include <QString>

namespace tessera {

/// A file that is written beside its place and goes there when all of it has reached the disk.
///
/// Every write, the flush to the disk and the close are looked at. The first that fails is the reason of
/// all that follow, and a former file stands as it was. Until it goes into place the file has no name, where
/// the file system can do that, so that a program that is killed leaves nothing behind; else a name of the
/// same folder with six more characters, which a reader takes for no result. A symbolic link stays, and the
/// file it leads to is replaced. What is no file, such as a device or a pipe, is written to as it is.
class CWholeFile {
public:
    CWholeFile() = default;
    ~CWholeFile();
    CWholeFile(const CWholeFile&) = delete;
    CWholeFile& operator=(const CWholeFile&) = delete;

    /// Once per object.
    /// @return false when the name is empty, that of a folder or of a file that may not be written, or when
    ///         nothing can be made beside it
    bool open(const QString& strFileName);
    /// Appends to the file.
    /// @return false when this or anything before it has failed
    bool write(const void* pData, qint64 nBytes);
    bool write(const QByteArray& bytes) { return write(bytes.constData(), bytes.size()); }
    /// Appends what another file holds.
    bool writeCopy(const QString& strFrom);
    /// Puts the file in place, or discards it when anything has failed.
    /// @param pstrReason  may be null; on failure the file's name and what is wrong
    bool commit(QString* pstrReason = nullptr);

    /// The name that open() was given.
    QString fileName() const { return m_strFileName; }
    /// What has failed, with the file's name before it; empty as long as nothing has.
    QString reason() const { return m_strReason; }

private:
    friend class CFileSet;  // puts several files in place step by step

    bool fail(const QString& strWhat);
    bool failBySystem();
    bool makeNamed();
    bool flush();
    bool giveName();
    bool copyToNamed();
    bool closeFile();
    bool exchange();
    void goBack();
    void removeBeside();
    void discard();

    QString m_strFileName;
    QString m_strReason;
    QByteArray m_strPlace;   ///< the file itself, behind all links
    QByteArray m_strBeside;  ///< its name until it is in place; after exchange() that of the former file
    int m_nFile = -1;
    int m_nFormer = -1;        ///< keeps the former file while its name goes, see exchange()
    bool m_bDirect = false;    ///< a device or a pipe
    bool m_bFlushed = false;   ///< all of it is on the disk
    bool m_bReplaced = false;  ///< by exchange(): there was a former file
};

/// Writes a file whole, as CWholeFile does.
/// @param pstrReason  may be null; on failure the file's name and what is wrong
[[nodiscard]] bool writeWholeFile(const QString& strFileName, const QByteArray& bytes,
                                  QString* pstrReason = nullptr);

}  // namespace tessera
