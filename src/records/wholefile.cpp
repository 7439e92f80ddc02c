#include "records/wholefile.h"

#include "records/reason.h"
#include "records/regularfile.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <random>

namespace tessera {

namespace {

const int g_nMaxLinks = 40;           // symbolic links followed in a chain, as many as Linux follows
const int g_nMaxNames = 100;          // random names tried; that many in use have another cause than chance
const int g_nLongestName = 255;       // NAME_MAX of Linux: bytes, without the folder
const qint64 g_nCopyBytes = 1 << 20;  // copied at a time: 1 MiB

/// The folder of a path with its slash; empty for a mere name.
QByteArray folderOf(const QByteArray& strPath)
{
    return strPath.left(strPath.lastIndexOf('/') + 1);
}

/// The path that a chain of symbolic links leads to, even if nothing exists there.
QByteArray behindLinks(QByteArray strPath)
{
    for (int i = 0; i < g_nMaxLinks; ++i) {
        char szTarget[PATH_MAX];
        const ssize_t nLength = ::readlink(strPath.constData(), szTarget, sizeof(szTarget));
        if (nLength < 0) {
            break;
        }
        const QByteArray strTarget(szTarget, int(nLength));
        strPath = strTarget.startsWith('/') ? strTarget : folderOf(strPath) + strTarget;
    }
    return strPath;
}

/// The path with a dot and six random characters behind it, its name shortened where that is too long.
QByteArray nameBeside(const QByteArray& strPath)
{
    static const char s_szLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    const int nSuffix = 7;  // the dot and the six characters
    const QByteArray strFolder = folderOf(strPath);
    QByteArray strName = strPath.mid(strFolder.size());
    while (strName.size() > g_nLongestName - nSuffix) {
        // Only whole characters of UTF-8 are cut off.
        char chLast;
        do {
            chLast = strName.at(strName.size() - 1);
            strName.chop(1);
        } while (!strName.isEmpty() && (chLast & 0xC0) == 0x80);
    }
    std::random_device random;
    strName += '.';
    for (int i = 1; i < nSuffix; ++i) {
        strName += s_szLetters[random() % (sizeof(s_szLetters) - 1)];
    }
    return strFolder + strName;
}

/// The path under /proc of an open file.
QByteArray pathOfOpenFile(int nFile)
{
    return "/proc/self/fd/" + QByteArray::number(nFile);
}

/// Whether an error of fdatasync() only says that files cannot be flushed here.
bool flushIsUnknown(int nError)
{
    return nError == EINVAL || nError == EROFS || nError == ENOSYS || nError == ENOTSUP;
}

}  // namespace

CWholeFile::~CWholeFile()
{
    discard();
}

bool CWholeFile::fail(const QString& strWhat)
{
    if (m_strReason.isEmpty()) {
        giveReason(&m_strReason, m_strFileName, strWhat);
    }
    return false;
}

/// Fails with the text of errno, so nothing that may change it must come between.
bool CWholeFile::failBySystem()
{
    return fail(qt_error_string(errno));
}

bool CWholeFile::open(const QString& strFileName)
{
    m_strFileName = strFileName;
    if (strFileName.isEmpty()) {
        return giveReason(&m_strReason, QStringLiteral("no name for the file"));
    }
    const QByteArray strName = QFile::encodeName(strFileName);
    struct stat info = {};
    const bool bExists = ::stat(strName.constData(), &info) == 0;
    if (bExists && S_ISDIR(info.st_mode)) {
        return fail(QStringLiteral("is a folder"));
    }
    // A write-protected file is not replaced, although its folder would allow it.
    if (bExists && ::access(strName.constData(), W_OK) != 0) {
        return failBySystem();
    }
    m_bDirect = bExists && !S_ISREG(info.st_mode);
    if (m_bDirect) {
        // Opening a pipe without a reader must fail instead of waiting for one.
        m_nFile = ::open(strName.constData(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
        return (m_nFile >= 0 && ::fcntl(m_nFile, F_SETFL, 0) == 0) || failBySystem();
    }
    m_strPlace = behindLinks(strName);
    const QByteArray strFolder = folderOf(m_strPlace);
    // Where the file system has them, a file without a name, which vanishes with the program.
#ifdef O_TMPFILE
    m_nFile = ::open(strFolder.isEmpty() ? "." : strFolder.constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC,
                     0666);
    if (m_nFile >= 0 && ::access(pathOfOpenFile(m_nFile).constData(), F_OK) != 0) {
        closeFile();  // it could not be named, as giveName() needs /proc for that
    }
#endif
    if (m_nFile < 0 && !makeNamed()) {
        return failBySystem();
    }
    if (bExists) {
        (void)!::fchmod(m_nFile, info.st_mode & 0777);  // may fail: some file systems have no permissions
    }
    return true;
}

/// Makes exchange() take the file away instead of putting one in its place. Of a symbolic link, the link
/// itself is taken away, not the file that it leads to.
bool CWholeFile::openRemoval(const QString& strFileName)
{
    m_strFileName = strFileName;
    m_strPlace = QFile::encodeName(strFileName);
    m_bRemoval = true;
    struct stat info = {};
    if (::lstat(m_strPlace.constData(), &info) != 0) {
        return failBySystem();
    }
    return !S_ISDIR(info.st_mode) || fail(QStringLiteral("is a folder"));
}

/// A new temporary name. It lies in the folder for waiting if there is one and that is in the file's own
/// folder. A file that is reached by a symbolic link may be in another folder, and rename() cannot move a
/// file to another file system, so its temporary name is beside it.
QByteArray CWholeFile::newNameBeside() const
{
    const QByteArray strFolder = folderOf(m_strPlace);
    return !m_strWaiting.isEmpty() && folderOf(m_strWaiting) == strFolder
               ? nameBeside(m_strWaiting + '/' + m_strPlace.mid(strFolder.size()))
               : nameBeside(m_strPlace);
}

/// Makes a file with a temporary name; errno has the cause of a failure.
bool CWholeFile::makeNamed()
{
    for (int i = 0; i < g_nMaxNames; ++i) {
        const QByteArray strBeside = newNameBeside();
        m_nFile = ::open(strBeside.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
        if (m_nFile >= 0) {
            m_strBeside = strBeside;
            return true;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return false;
}

bool CWholeFile::write(const void* pData, qint64 nBytes)
{
    if (!m_strReason.isEmpty() || m_nFile < 0) {
        return fail(QStringLiteral("not open"));
    }
    const char* p = static_cast<const char*>(pData);
    while (nBytes > 0) {
        const ssize_t nWritten = ::write(m_nFile, p, size_t(nBytes));
        if (nWritten < 0 && errno == EINTR) {
            continue;
        }
        if (nWritten < 0) {
            return failBySystem();
        }
        // A disk that becomes full writes a part of the bytes. The next call then fails with the reason.
        p += nWritten;
        nBytes -= nWritten;
    }
    return true;
}

bool CWholeFile::writeCopy(const QString& strFrom)
{
    QFile file(strFrom);
    QString strWhat;
    if (!m_strReason.isEmpty()) {
        return false;
    }
    if (!openRegularFile(file, QIODevice::ReadOnly, strWhat)) {
        return giveReason(&m_strReason, strFrom, strWhat);
    }
    QByteArray bytes;
    do {
        bytes = file.read(g_nCopyBytes);
        if (file.error() != QFileDevice::NoError) {
            return giveReason(&m_strReason, strFrom, file.errorString());
        }
    } while (!bytes.isEmpty() && write(bytes));
    return m_strReason.isEmpty();
}

/// Flushes the file to the disk. Network file systems report a full disk only here.
bool CWholeFile::flush()
{
    if (m_bRemoval) {
        return m_strReason.isEmpty();
    }
    if (!m_strReason.isEmpty() || m_nFile < 0) {
        return fail(QStringLiteral("not open"));
    }
    if (!m_bDirect && !m_bFlushed && ::fdatasync(m_nFile) != 0 && !flushIsUnknown(errno)) {
        return failBySystem();
    }
    m_bFlushed = true;
    return true;
}

/// Gives the file its temporary name, if it has none yet, and closes it; a device or a pipe is only closed.
bool CWholeFile::giveName()
{
    if (m_bRemoval || (m_nFile < 0 && (m_bDirect || !m_strBeside.isEmpty()))) {
        return true;  // nothing is written, or it was named and closed before
    }
    if (m_bDirect) {
        return closeFile() || failBySystem();
    }
    for (int i = 0; m_strBeside.isEmpty() && i < g_nMaxNames; ++i) {
        const QByteArray strBeside = newNameBeside();
        if (::linkat(AT_FDCWD, pathOfOpenFile(m_nFile).constData(), AT_FDCWD, strBeside.constData(),
                     AT_SYMLINK_FOLLOW) == 0) {
            m_strBeside = strBeside;
        } else if (errno != EEXIST) {
            break;
        }
    }
    if (m_strBeside.isEmpty() && !copyToNamed()) {
        return failBySystem();
    }
    return closeFile() || failBySystem();
}

/// Copies the unnamed file to one with a temporary name, for file systems that cannot name it afterwards.
bool CWholeFile::copyToNamed()
{
    const int nUnnamed = m_nFile;
    m_nFile = -1;
    m_bFlushed = false;
    const bool bMade = makeNamed();
    struct stat info;
    if (bMade && ::fstat(nUnnamed, &info) == 0) {
        (void)!::fchmod(m_nFile, info.st_mode & 0777);  // those of the former file, see open()
    }
    const bool bCopied = bMade && writeCopy(QFile::decodeName(pathOfOpenFile(nUnnamed))) && flush();
    const int nError = errno;  // of makeNamed(); close() may replace it
    ::close(nUnnamed);
    errno = nError;
    return bCopied;
}

bool CWholeFile::closeFile()
{
    const int nFile = m_nFile;
    m_nFile = -1;
    return ::close(nFile) == 0 || errno == EINTR;  // Linux has closed the file where it says EINTR
}

bool CWholeFile::commit(QString* pstrReason)
{
    bool bDone = flush() && giveName();
    if (bDone && !m_bDirect) {
        bDone = std::rename(m_strBeside.constData(), m_strPlace.constData()) == 0 || failBySystem();
        if (bDone) {
            m_strBeside.clear();
        }
    }
    discard();
    return bDone || giveReason(pstrReason, m_strReason);
}

/// Gives a file that is to be removed a temporary name, from which goBack() can bring it back.
bool CWholeFile::moveAside()
{
    const QByteArray strFormer = newNameBeside();
    if (std::rename(m_strPlace.constData(), strFormer.constData()) != 0) {
        return failBySystem();
    }
    m_strBeside = strFormer;
    m_bReplaced = true;
    return true;
}

/// Puts the file, which has its temporary name, into place, and gives the former file, if there is one, a
/// temporary name. For a removal it does the latter alone.
/// @param bHoldFormer  keep the former file open, as explained below; a process may have some hundreds open
bool CWholeFile::exchange(bool bHoldFormer)
{
    if (m_bRemoval) {
        return moveAside();
    }
    if (m_bDirect) {
        return true;
    }
    const char* const pszPlace = m_strPlace.constData();
    struct stat info = {};
    m_bReplaced = ::lstat(pszPlace, &info) == 0;
    if (m_bReplaced && S_ISDIR(info.st_mode)) {  // made since open()
        return fail(QStringLiteral("is a folder"));
    }
    if (!m_bReplaced) {
        if (std::rename(m_strBeside.constData(), pszPlace) != 0) {
            return failBySystem();
        }
        m_strBeside.clear();
        return true;
    }
    // Freeing the room of a removed file takes a hundred times as long as renaming. While the file is open
    // its room stays, so the names of the whole set are in order before any room is freed.
    m_nFormer = bHoldFormer ? ::open(pszPlace, O_PATH | O_CLOEXEC | O_NOFOLLOW) : -1;
#ifdef RENAME_EXCHANGE
    if (::renameat2(AT_FDCWD, m_strBeside.constData(), AT_FDCWD, pszPlace, RENAME_EXCHANGE) == 0) {
        return true;
    }
#endif
    // The file system cannot exchange two names in one step. Between the two steps there is no file in place.
    const QByteArray strFormer = newNameBeside();
    if (std::rename(pszPlace, strFormer.constData()) != 0) {
        return failBySystem();
    }
    if (std::rename(m_strBeside.constData(), pszPlace) != 0) {
        failBySystem();
        std::rename(strFormer.constData(), pszPlace);
        return false;
    }
    m_strBeside = strFormer;
    return true;
}

/// Undoes exchange().
void CWholeFile::goBack()
{
    if (m_bDirect) {
        return;
    }
    if (m_bReplaced) {
        std::rename(m_strBeside.constData(), m_strPlace.constData());
    } else {
        ::unlink(m_strPlace.constData());
    }
    m_strBeside.clear();  // if renaming back fails, the former file keeps this name
}

/// Before exchange() that is the new file, after it the former one.
void CWholeFile::removeBeside()
{
    if (!m_strBeside.isEmpty()) {
        ::unlink(m_strBeside.constData());
    }
    m_strBeside.clear();
}

void CWholeFile::discard()
{
    if (m_nFile >= 0) {
        closeFile();
    }
    removeBeside();
    if (m_nFormer >= 0) {
        ::close(m_nFormer);
    }
    m_nFormer = -1;
}

bool writeWholeFile(const QString& strFileName, const QByteArray& bytes, QString* pstrReason)
{
    CWholeFile file;
    file.open(strFileName);
    file.write(bytes);
    return file.commit(pstrReason);
}

}  // namespace tessera
