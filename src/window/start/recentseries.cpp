#include "window/start/recentseries.h"

#include <QHash>
#include <QSettings>

namespace tessera {

namespace {

const int g_nMaxRecent = 20;
const QLatin1Char g_chBetween('|');  // between the files of an entry, and behind its date

QString listKey()
{
    return QStringLiteral("recentSeriesList");
}

// The dates have a key of their own, as "date|entry", so that the list keeps its older format.
QString datesKey()
{
    return QStringLiteral("recentSeriesUsed");
}

QHash<QString, QDateTime> datesOf(const QSettings& settings)
{
    QHash<QString, QDateTime> hash;
    for (const QString& strLine : settings.value(datesKey()).toStringList()) {
        const QDateTime date = QDateTime::fromString(strLine.section(g_chBetween, 0, 0), Qt::ISODate);
        if (date.isValid()) {
            hash.insert(strLine.section(g_chBetween, 1), date);
        }
    }
    return hash;
}

void writeList(QSettings& settings, const QStringList& listEntry, const QHash<QString, QDateTime>& hashDate)
{
    QStringList listDate;
    for (const QString& strEntry : listEntry) {
        if (hashDate.contains(strEntry)) {
            listDate.append(hashDate[strEntry].toString(Qt::ISODate) + g_chBetween + strEntry);
        }
    }
    settings.setValue(listKey(), listEntry);
    settings.setValue(datesKey(), listDate);
    settings.sync();
}

}  // namespace

QList<RecentSeries> recentSeries(const QSettings& settings)
{
    const QHash<QString, QDateTime> hashDate = datesOf(settings);
    QList<RecentSeries> list;
    for (const QString& strEntry : settings.value(listKey()).toStringList()) {
        const QStringList listFile = strEntry.split(g_chBetween, Qt::SkipEmptyParts);
        if (!listFile.isEmpty()) {
            list.append({listFile, hashDate.value(strEntry)});
        }
    }
    return list;
}

void enterRecentSeries(QSettings& settings, const QStringList& listFile, const QDateTime& now)
{
    const QString strEntry = listFile.join(g_chBetween);
    QStringList listEntry = settings.value(listKey()).toStringList();
    listEntry.removeAll(strEntry);
    listEntry.prepend(strEntry);
    QHash<QString, QDateTime> hashDate = datesOf(settings);
    hashDate.insert(strEntry, now);
    writeList(settings, listEntry.mid(0, g_nMaxRecent), hashDate);
}

void removeRecentSeries(QSettings& settings, const QStringList& listFile)
{
    QStringList listEntry = settings.value(listKey()).toStringList();
    if (listEntry.removeAll(listFile.join(g_chBetween)) > 0) {
        writeList(settings, listEntry, datesOf(settings));
    }
}

}  // namespace tessera
