// Former result files: kept under another name when something poorer is about to take their place.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace tessera {

/// What became of former files.
enum class FormerFiles {
    NoneWorthKeeping,  ///< there are none, or they hold no more than what is to come
    Kept,              ///< copied to their names with "~" behind
    RicherAreKept,     ///< the names with "~" hold more already, and were left alone
    Failed             ///< they could not be copied; nothing has changed
};

/// The name under which a former file is kept.
QString nameOfKept(const QString& strFileName);

/// Copies files that belong together to their names with "~" behind, before poorer ones replace them. What is
/// kept under such a name is never replaced by something that holds less.
/// @param listFile    the first of them tells how much the files hold; any but this may be missing
/// @param fnWorth     how much a file holds, such as peaks; 0 when it is not there or can't be read
/// @param nNew        how much those hold that are to come
/// @param pstrReason  may be null; on failure the name of a file and what is wrong
FormerFiles keepFormerFiles(const QStringList& listFile, const std::function<int(const QString&)>& fnWorth,
                            int nNew, QString* pstrReason = nullptr);

}  // namespace tessera
