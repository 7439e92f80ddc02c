// Crystal reading: the results of single series out of their folders.
#pragma once

#include "crystals/crystal.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

/// A folder or series that gives no crystal, with the reason in words.
struct UnreadCrystal {
    QString strName;
    QString strReason;
};

struct ReadCrystals {
    std::vector<Crystal> listCrystal;  ///< in the order of the folders, in a folder by name
    std::vector<UnreadCrystal> listUnread;
};

/// Reads what the roads left: of each NAME.run.json in a folder the cell and the judgement, and
/// NAME_integrated.hkl, whose bytes must be those that the record tells, so that a half-written list, or one
/// of another run, is told and left out. Where a later run under the name left the intensities as they were,
/// the one that found them counts, which the record keeps. Several runs of different names in a folder are
/// several crystals.
ReadCrystals readCrystals(const QStringList& listFolder);

}  // namespace tessera
