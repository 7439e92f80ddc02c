// keptContrast: the contrast that the user has chosen for a series, from one opening to the next.
#pragma once

#include <QString>

#include <optional>

class QSettings;

namespace tessera {

/// The contrast of one series.
struct KeptContrast {
    double dfLow = 0, dfHigh = 0;  ///< pixel values shown black and white
    bool bLogarithmic = false;
};

/// Series of which the contrast is kept; the one that was changed longest ago goes first.
constexpr int g_nKeptContrasts = 50;

/// The saved limits of a series; nothing if none were saved, or if the entry in the settings is damaged.
/// @param strSeries  its project, full path
std::optional<KeptContrast> keptContrast(const QSettings& settings, const QString& strSeries);
/// Keeps it, and gives up the oldest ones beyond g_nKeptContrasts.
void keepContrast(QSettings& settings, const QString& strSeries, const KeptContrast& contrast);

}  // namespace tessera
