#include "records/worklock.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessera {

namespace {

constexpr int g_nTries = 10;  // if the file is removed meanwhile, it is created again

/// Whether the open file still has that name; the former holder may have removed it on release.
bool isStillThere(int nFile, const QByteArray& strName)
{
    struct stat infoOpen, infoNamed;
    return ::fstat(nFile, &infoOpen) == 0 && ::stat(strName.constData(), &infoNamed) == 0 &&
           infoOpen.st_dev == infoNamed.st_dev && infoOpen.st_ino == infoNamed.st_ino;
}

int locked(int nFile)
{
    int nResult = -1;
    do {
        nResult = ::flock(nFile, LOCK_EX | LOCK_NB);
    } while (nResult != 0 && errno == EINTR);
    return nResult == 0 ? 0 : errno;
}

}  // namespace

bool CWorkLock::take(const QString& strFile, QString* pstrReason, bool* pbHeld)
{
    release();
    if (pbHeld) {
        *pbHeld = false;
    }
    const QByteArray strName = QFile::encodeName(strFile);
    const auto fail = [&](const QString& strWhat) {
        if (pstrReason) {
            *pstrReason = strFile + QStringLiteral(": ") + strWhat;
        }
        return false;
    };
    for (int i = 0; i < g_nTries; ++i) {
        const int nFile = ::open(strName.constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
        if (nFile < 0) {
            return fail(qt_error_string(errno));
        }
        const int nError = locked(nFile);
        if (nError == EWOULDBLOCK) {
            ::close(nFile);
            if (pbHeld) {
                *pbHeld = true;
            }
            return fail(QStringLiteral("another window holds it"));
        }
        if (isStillThere(nFile, strName)) {
            m_nFile = nFile;
            m_strFile = strFile;
            return true;
        }
        ::close(nFile);
    }
    return fail(QStringLiteral("it goes as soon as it is made"));
}

void CWorkLock::release()
{
    if (isTaken()) {
        ::close(m_nFile);
        m_nFile = -1;
    }
}

void CWorkLock::remove()
{
    if (isTaken()) {
        QFile::remove(m_strFile);  // before the release, so as not to remove the file of the next holder
        release();
    }
}

}  // namespace tessera
