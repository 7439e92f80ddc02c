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

/// The result of readCrystals().
struct ReadCrystals {
    std::vector<Crystal> listCrystal;       ///< in the order of the folders, in a folder by name
    std::vector<UnreadCrystal> listUnread;  ///< records that give no crystal, and folders without a record
};

/// Reads the results of runs: of each record NAME.run.json in a folder the cell, the Laue class and the
/// quality of the data, and the intensities from NAME_integrated.hkl.
///
/// The SHA-256 of the intensity file must be the one in the record. A file that is not whole, or that another
/// run wrote, is reported in listUnread. If a later run of the same name did not integrate anew, the cell and
/// the quality come from the earlier run that wrote the intensities, which the record keeps under "former".
/// Each record is one crystal, also where several stand in one folder.
ReadCrystals readCrystals(const QStringList& listFolder);

}  // namespace tessera
