// Result folders: where the results lie that a user means by some folders.
#pragma once

#include "crystals/crystalreading.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tessera {

struct ResultFolders {
    QStringList listFolder;  ///< with records of runs; each once, sorted, without links in their paths
    std::vector<UnreadCrystal> listUnread;  ///< other inputs, which contain no such folder
    QStringList listNote;                   ///< what was named twice, and what is passed over
};

/// A folder that holds records of runs (NAME.run.json) is one of results; of any other those of the folders
/// in it that do are taken, and the others in it are told: ten by their names, then how many. A record stands
/// for its folder. What merging has written is passed over.
///
/// The order of what is given, names twice and links do not matter.
/// @param strOutFolder  that the merged files go to
ResultFolders findResultFolders(const QStringList& listGiven, const QString& strOutFolder);

/// Whether a folder holds records of runs.
bool holdsRuns(const QString& strFolder);

}  // namespace tessera
