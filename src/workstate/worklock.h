// CWorkLock: tells whether a living window holds a file.
#pragma once

#include <QString>

namespace tessera {

/// A lock that the system takes back when the process ends, however it ends: no lock outlives a crash or a
/// power cut, and none is taken for held because another process has got the number of a former one. It works
/// between two windows of one process as well, and on network file systems that know locks. Where the file
/// system knows none, nothing counts as held.
class CWorkLock {
public:
    CWorkLock() = default;
    ~CWorkLock() { release(); }
    CWorkLock(const CWorkLock&) = delete;
    CWorkLock& operator=(const CWorkLock&) = delete;

    /// Makes the lock's file where there is none and takes the lock, without waiting.
    /// @param pstrReason  may be null; on failure why
    /// @return false where another one holds it, or where no file can be made
    bool take(const QString& strFile, QString* pstrReason = nullptr);
    /// Gives the lock back; its file stays.
    void release();
    /// Gives the lock back and removes its file.
    void remove();

    bool isTaken() const { return m_nFile >= 0; }

private:
    QString m_strFile;
    int m_nFile = -1;
};

}  // namespace tessera
