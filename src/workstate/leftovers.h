// Leftovers: kept works whose windows have not come to their end.
#pragma once

#include "workstate/keptwork.h"
#include "workstate/worklock.h"

#include <memory>
#include <vector>

namespace tessera {

/// A window keeps its work in a folder, as STEM.work, and holds STEM.lock as long as it lives.
QString keptFile(const QString& strFolder, const QString& strStem);
QString lockFile(const QString& strFolder, const QString& strStem);

/// A kept work that no living window holds. Whoever has this holds it from now on, so that two windows that
/// start together do not offer the same.
struct Leftover {
    KeptWork work;
    std::unique_ptr<CWorkLock> pLock;

    /// Removes its files.
    /// @return false where the work cannot be removed
    [[nodiscard]] bool remove();
};

/// Takes all works of a folder that nobody holds, the newest first, however old.
///
/// What a killed window has left of a file that it was writing goes, and a lock without a work. A file that
/// is damaged gets another name, STEM.damaged, and is not offered again.
/// @param listReason  a line for each file that is not offered though nobody holds it
std::vector<Leftover> takeLeftovers(const QString& strFolder, QStringList& listReason);

}  // namespace tessera
