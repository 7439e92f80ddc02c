// MergePlace: the folder for the files of a merging, locked for this merging.
#pragma once

#include "crystals/crystalsjob.h"
#include "records/worklock.h"

#include <QString>

namespace tessera {

/// The folder for the files of a merging, held by a lock file in it. It is taken before the first crystal is
/// read and kept until all files are written, so that hours of merging are not lost on a folder that cannot
/// be written to, and that two mergings do not mix their files.
class CMergePlace {
public:
    CMergePlace() = default;
    /// Removes the lock, and the folder too if take() made it and nothing was written to it.
    ~CMergePlace();
    CMergePlace(const CMergePlace&) = delete;
    CMergePlace& operator=(const CMergePlace&) = delete;

    /// Makes the folder if it does not exist, locks it, and checks that files in it which the merging would
    /// write can be replaced.
    /// @return why the merging cannot write there, without a full stop, with no lock held; empty if it can
    QString take(const CrystalsJobOptions& options);

    bool isTaken() const { return m_lock.isTaken(); }
    /// The absolute path, without "." and ".." and without a slash at the end; symbolic links stay.
    QString folder() const { return m_strFolder; }

private:
    QString m_strFolder;
    bool m_bMade = false;
    CWorkLock m_lock;
};

/// Why a file of a merging must not be written under a name: it is a symbolic link to the file of known
/// cells, or into a folder with inputs of the merging or results of a series. Empty if it may be written.
QString whyNoTarget(const QString& strFile, const CrystalsJobOptions& options);

}  // namespace tessera
