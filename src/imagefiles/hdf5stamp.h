// Hdf5Stamp: whether files have changed since something was found out about them.
#pragma once

#include <QDateTime>
#include <QString>

#include <list>
#include <vector>

namespace tessera {

/// Size and time of a file when it was read.
struct Hdf5Stamp {
    QString strFile;
    qint64 nSize = -1;  ///< -1: the file did not exist
    QDateTime time;     ///< of the last change
};

/// The stamp of a file as it is now.
Hdf5Stamp stampOf(const QString& strFile);

/// Whether files are still as they were when they were read. A file that was changed just before the
/// reading may have been changed again within the resolution of the clock, so it does not count as current.
/// A file with a date after the reading does, as that date is from the clock of another computer, of which
/// nothing follows.
/// @param timeRead  when the files were read
bool isCurrent(const std::vector<Hdf5Stamp>& vecStamp, const QDateTime& timeRead);

/// Remembers the last 64 files on which HDF5 itself fails, and the reasons, as finding out may take a
/// minute. Each is remembered until the file or its folder changes; the folder because the fault may be in
/// a file that is linked.
class CHdf5Faults {
public:
    /// The reason why HDF5 fails on a file.
    /// @return empty when none is known that is still valid
    QString reason(const QString& strFile) const;

    /// Remembers a file.
    /// @param timeRead  when the reading began
    void keep(const QString& strFile, const QDateTime& timeRead, const std::vector<Hdf5Stamp>& vecStamp,
              const QString& strReason);

    /// The stamps that a fault depends on. Must be called before the file is read.
    static std::vector<Hdf5Stamp> stampsOf(const QString& strFile);

private:
    struct Fault {
        std::vector<Hdf5Stamp> vecStamp;
        QDateTime timeRead;
        QString strReason;
    };
    std::list<Fault> m_listFault;  ///< the most recent one comes first
};

}  // namespace tessera
