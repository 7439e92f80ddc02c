// SideNumber: one line of a log of an acquisition, its key understood and its value in the units of a header.
#pragma once

#include "imagefiles/frameheader.h"

#include <QString>

#include <optional>

namespace tessera {

struct SideTexts;

struct SideNumber {
    ToldNumber SideTexts::*pTarget = nullptr;
    QString strKey;    ///< as it stood
    double df = 0;     ///< NaN where the unit makes no sense
    QString strDoubt;  ///< what was guessed of it, or why it is not taken; empty if nothing
};

/// @param strKey    such as "Camera length (mm)", "cameraLength" or "exposure_time_ms"
/// @param strValue  a number, and what follows it: "1.5 s"
/// @return none where the key names nothing that a series needs, or the value is no number
std::optional<SideNumber> sideNumber(const QString& strKey, const QString& strValue);

}  // namespace tessera
