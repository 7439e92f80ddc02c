// Hdf5Stamp: whether files are still as they were when something was found out about them.
#pragma once

#include <QDateTime>
#include <QString>

#include <list>
#include <vector>

namespace tessera {

/// A file as it was when it was read.
struct Hdf5Stamp {
    QString strFile;
    qint64 nSize = -1;  ///< -1: there was none
    QDateTime time;
};

Hdf5Stamp stampOf(const QString& strFile);

/// Whether files are what they were at a time. A file that was changed just before that time may have been
/// changed again within the clock's tick, so it is not; one of a date after it is, as that is another
/// computer's clock, which the tick tells nothing of.
bool isCurrent(const std::vector<Hdf5Stamp>& vecStamp, const QDateTime& timeRead);

/// Files that HDF5 itself fails on, and why; the last 64 of them. As finding that out may take a minute, each
/// is kept until the file or its folder changes, the latter as the fault may be in a file that it links to.
class CHdf5Faults {
public:
    /// @return the reason; empty when there is none, or none that still holds
    QString reason(const QString& strFile) const;

    /// @param timeRead  when the reading began
    void keep(const QString& strFile, const QDateTime& timeRead, const std::vector<Hdf5Stamp>& vecStamp,
              const QString& strReason);

    /// What a fault depends on, to be asked before the file is read.
    static std::vector<Hdf5Stamp> stampsOf(const QString& strFile);

private:
    struct Fault {
        std::vector<Hdf5Stamp> vecStamp;
        QDateTime timeRead;
        QString strReason;
    };
    std::list<Fault> m_listFault;  ///< the last one comes first
};

}  // namespace tessera
