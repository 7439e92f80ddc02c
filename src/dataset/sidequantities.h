// SideNumber: interprets a line of an acquisition log: its key, and its value in the units of a header.
#pragma once

#include "imagefiles/frameheader.h"

#include <QString>

#include <optional>

namespace tessera {

struct SideTexts;

/// A number of a log.
struct SideNumber {
    ToldNumber SideTexts::*pTarget = nullptr;  ///< which number of the texts it is
    QString strKey;                            ///< key as in the log
    double df = 0;                             ///< value; NaN where the unit is impossible
    QString strDoubt;  ///< what was guessed, or why the number is not used; else empty
};

/// Interprets a key and its value.
/// @param strKey    such as "Camera length (mm)", "cameraLength" or "exposure_time_ms"
/// @param strValue  a number and what follows it, such as "1.5 s"
/// @return nothing where the key is of no interest or the value is no number
std::optional<SideNumber> sideNumber(const QString& strKey, const QString& strValue);

}  // namespace tessera
