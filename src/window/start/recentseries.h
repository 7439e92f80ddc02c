// Recent series: the list of what was opened last, as the settings keep it.
#pragma once

#include <QDateTime>
#include <QList>
#include <QStringList>

class QSettings;

namespace tessera {

/// An entry of the list.
struct RecentSeries {
    QStringList listFile;  ///< full paths
    QDateTime lastUse;     ///< not valid where it was not noted
};

/// The list, the latest first.
QList<RecentSeries> recentSeries(const QSettings& settings);
/// Puts files at its head, which then has 20 entries at most.
void enterRecentSeries(QSettings& settings, const QStringList& listFile, const QDateTime& now);
/// Takes them off; of files that are not on it nothing changes.
void removeRecentSeries(QSettings& settings, const QStringList& listFile);

}  // namespace tessera
