// MergePlace: the folder that a merging writes to, held for it alone.
#pragma once

#include "crystals/crystalsjob.h"
#include "records/worklock.h"

#include <QString>

namespace tessera {

/// From before the first crystal is read until the files stand, so that hours of merging are not lost on a
/// folder that cannot be written to, and that two mergings do not mix their files.
class CMergePlace {
public:
    CMergePlace() = default;
    /// Gives the folder back, and takes it away where it was made here and nothing was written to it.
    ~CMergePlace();
    CMergePlace(const CMergePlace&) = delete;
    CMergePlace& operator=(const CMergePlace&) = delete;

    /// Makes the folder and holds it; looks whether files of this name that stand there can be replaced.
    /// @return why not, without a full stop; empty: it is held
    QString take(const CrystalsJobOptions& options);

    bool isTaken() const { return m_lock.isTaken(); }
    /// Without links to other names of itself, as far as it was given so; no slash at the end.
    QString folder() const { return m_strFolder; }

private:
    QString m_strFolder;
    bool m_bMade = false;
    CWorkLock m_lock;
};

/// What speaks against writing a file of a merging there: a link that leads to an input of the merging, or
/// into a folder with inputs. Empty if nothing does.
QString whyNoTarget(const QString& strFile, const CrystalsJobOptions& options);

}  // namespace tessera
