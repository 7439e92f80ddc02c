// SideNumber: a number of an acquisition log, interpreted from its key and its value with units.
#pragma once

#include "imagefiles/frameheader.h"

#include <QString>

#include <optional>

namespace tessera {

struct SideTexts;

/// A number of a log, in the units of FrameHeader.
struct SideNumber {
    ToldNumber SideTexts::*pTarget = nullptr;  ///< which number of SideTexts it is
    QString strKey;                            ///< key as in the log
    double df = 0;     ///< the value; NaN where it cannot be used, because of its unit or an ambiguous comma
    QString strDoubt;  ///< what was guessed, or why the number is not used, for the user; else empty
};

/// Interprets a key and its value.
/// @param strKey    such as "Camera length (mm)", "cameraLength" or "exposure_time_ms"
/// @param strValue  a number and what follows it, such as "1.5 s"
/// @return nothing where the key is of no interest, the value does not begin with a number, or the number
///         stands for an unknown one: programs write 0 or -1 for these
std::optional<SideNumber> sideNumber(const QString& strKey, const QString& strValue);

}  // namespace tessera
