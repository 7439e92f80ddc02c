// Crystal tables: what was read of result folders, and what their merging gave, as records.
#pragma once

#include "crystals/crystalsjob.h"
#include "window/integration/qualitytable.h"

#include <QColor>
#include <QString>

#include <vector>

namespace tessera {

/// A crystal as it is listed before the merging; its intensities are only counted.
struct ListedCrystal {
    Crystal crystal;    ///< without its intensities
    int nObserved = 0;  ///< of them
};

/// What one folder of results gave.
struct ListedFolder {
    QString strFolder;  ///< as it is handed on to the merging
    std::vector<ListedCrystal> listCrystal;
    std::vector<UnreadCrystal> listUnread;
};

/// Reads a folder; of one without results that is the reason.
ListedFolder listedFolder(const QString& strFolder);

/// Cell and quality of each crystal by itself, a row each, in the order of the folders.
QualityTable listedTable(const std::vector<ListedFolder>& listFolder);
/// What gives no crystal, a row each, with the reasons.
QualityTable unreadTable(const std::vector<UnreadCrystal>& listUnread);
/// All of them, in the order of the folders.
std::vector<UnreadCrystal> unreadOf(const std::vector<ListedFolder>& listFolder);

/// A row for each group: compound, cell with its spread, what was merged and how good that is.
QualityTable groupTable(const CrystalsJobResult& result);
/// A row for each crystal of a group: setting, scale, share in the whole, and why it was left out.
QualityTable memberTable(const CrystalsJobResult& result, size_t nGroup);

/// What all of the run came to, in a sentence.
QString mergedSummary(const CrystalsJobResult& result);

/// The name of a compound for a reader: the known one, else the number of the group, from 1.
QString titleOfGroup(const CrystalsJobResult& result, size_t nGroup);

/// The colour of a group in trees, on a light ground; grey of none (−1), and of those beyond the eighth.
QColor colorOfGroup(int nGroup);

}  // namespace tessera
