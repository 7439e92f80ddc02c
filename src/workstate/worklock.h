// CWorkLock: a file lock that tells whether the window that took it is still running.
#pragma once

#include <QString>

namespace tessera {

/// A lock that the operating system releases when the process ends in any way: it does not outlive a crash or
/// a power cut, and does not depend on process numbers, which are reused. It also works between two windows
/// of one process, and on network file systems that support locks. On a file system without locks, no lock
/// counts as held.
class CWorkLock {
public:
    CWorkLock() = default;                            ///< holds no lock
    ~CWorkLock() { release(); }                       ///< releases the lock
    CWorkLock(const CWorkLock&) = delete;             ///< a lock has one owner
    CWorkLock& operator=(const CWorkLock&) = delete;  ///< a lock has one owner

    /// Takes the lock without waiting; creates its file if necessary.
    /// @param pstrReason  may be null; gets the reason of a failure
    /// @return false if somebody else holds the lock, or the file cannot be created
    bool take(const QString& strFile, QString* pstrReason = nullptr);
    /// Releases the lock and leaves its file.
    void release();
    /// Releases the lock and removes its file.
    void remove();

    /// Whether this object holds the lock.
    bool isTaken() const { return m_nFile >= 0; }

private:
    QString m_strFile;
    int m_nFile = -1;
};

}  // namespace tessera
