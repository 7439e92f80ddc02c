#include "window/frames/keptcontrast.h"

#include <QSettings>
#include <QStringList>

#include <cmath>

namespace tessera {

namespace {

// Each entry is "low high logarithmic path", numbers in the C locale.
const char g_szKey[] = "contrastOfSeries";

QString pathOf(const QString& strEntry)
{
    return strEntry.section(QLatin1Char(' '), 3);
}

}  // namespace

std::optional<KeptContrast> keptContrast(const QSettings& settings, const QString& strSeries)
{
    for (const QString& strEntry : settings.value(QLatin1String(g_szKey)).toStringList()) {
        if (pathOf(strEntry) != strSeries) {
            continue;
        }
        bool bLow = false, bHigh = false;
        KeptContrast contrast;
        contrast.dfLow = strEntry.section(QLatin1Char(' '), 0, 0).toDouble(&bLow);
        contrast.dfHigh = strEntry.section(QLatin1Char(' '), 1, 1).toDouble(&bHigh);
        contrast.bLogarithmic = strEntry.section(QLatin1Char(' '), 2, 2) == QLatin1String("1");
        const bool bSound = bLow && bHigh && std::isfinite(contrast.dfLow) && std::isfinite(contrast.dfHigh);
        return bSound ? std::optional<KeptContrast>(contrast) : std::nullopt;
    }
    return {};
}

void keepContrast(QSettings& settings, const QString& strSeries, const KeptContrast& contrast)
{
    QStringList listEntry = settings.value(QLatin1String(g_szKey)).toStringList();
    for (int i = listEntry.size() - 1; i >= 0; --i) {
        if (pathOf(listEntry[i]) == strSeries) {
            listEntry.removeAt(i);
        }
    }
    listEntry.prepend(QStringLiteral("%1 %2 %3 ")
                          .arg(contrast.dfLow, 0, 'g', 12)
                          .arg(contrast.dfHigh, 0, 'g', 12)
                          .arg(int(contrast.bLogarithmic)) +
                      strSeries);
    settings.setValue(QLatin1String(g_szKey), QStringList(listEntry.mid(0, g_nKeptContrasts)));
}

}  // namespace tessera
