// Leftovers: kept works of windows that did not end normally.
#pragma once

#include "records/worklock.h"
#include "workstate/keptwork.h"

#include <memory>
#include <vector>

namespace tessera {

/// The file in which a window saves its work: STEM.work in the folder.
QString keptFile(const QString& strFolder, const QString& strStem);
/// The file that a window keeps locked while it runs: STEM.lock in the folder.
QString lockFile(const QString& strFolder, const QString& strStem);

/// A kept work whose window no longer runs. The owner of this object holds the lock, so that two windows that
/// start at the same time do not offer the same work.
struct Leftover {
    KeptWork work;
    std::unique_ptr<CWorkLock> pLock;

    /// Removes the files of the work.
    /// @return false if the work cannot be removed
    [[nodiscard]] bool remove();
};

/// Takes all works of a folder that are not locked by a window, the newest first, however old they are.
///
/// Removes incomplete files that a killed window left behind, and locks without a work. A damaged file is
/// renamed to STEM.damaged and not offered again.
/// @param listReason  gets a line for each unlocked file that is not offered
std::vector<Leftover> takeLeftovers(const QString& strFolder, QStringList& listReason);

}  // namespace tessera
