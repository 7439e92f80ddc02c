// Reasons: why something failed, in words for the log. Functions that read or write files hand the reason out
// through a last parameter `QString* pstrReason`, which may be null. It is written only if there is a reason.
#pragma once

#include <QString>

namespace tessera {

/// Hands a reason to a caller who wants it.
/// @param pstrReason  may be null
/// @return false, for `return giveReason(...)` in functions that return bool
inline bool giveReason(QString* pstrReason, const QString& strReason)
{
    if (pstrReason) {
        *pstrReason = strReason;
    }
    return false;
}

/// Does the same with the name of the file before the reason.
inline bool giveReason(QString* pstrReason, const QString& strFileName, const QString& strReason)
{
    return giveReason(pstrReason, QStringLiteral("%1: %2").arg(strFileName, strReason));
}

}  // namespace tessera
