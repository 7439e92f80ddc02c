// CWorkLock: tells whether a living window or program holds a file.
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

    /// Makes the lock's file where there is none and takes the lock, without waiting.
    /// @param pstrReason  may be null; on failure why
    /// @param pbHeld      may be null; on failure whether another one holds it
    /// @return false where another one holds it, or where no file can be made
    bool take(const QString& strFile, QString* pstrReason = nullptr, bool* pbHeld = nullptr);
    /// Gives the lock back; its file stays.
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
