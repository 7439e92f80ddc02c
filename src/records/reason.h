// Reasons: why something failed, in words for the log.
#pragma once

#include <QString>

namespace tessera {

/// Hands a reason to a caller who wants it.
/// @param pstrReason  may be null
/// @return false, which the function that failed returns
inline bool giveReason(QString* pstrReason, const QString& strReason)
{
    if (pstrReason) {
        *pstrReason = strReason;
    }
    return false;
}

/// The same with the name of the file before it.
inline bool giveReason(QString* pstrReason, const QString& strFileName, const QString& strReason)
{
    return giveReason(pstrReason, QStringLiteral("%1: %2").arg(strFileName, strReason));
}

}  // namespace tessera
