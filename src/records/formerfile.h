// Former result files: copies of result files that poorer ones are about to replace.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace tessera {

/// What keepFormerFiles() did.
enum class FormerFiles {
    NoneWorthKeeping,  ///< there are no former files, or they are not richer than the new ones
    Kept,              ///< the former files were copied to names that end in "~"
    RicherAreKept,     ///< earlier copies are richer than the former files and were left as they are
    Failed             ///< the former files could not be copied; nothing has changed
};

/// The name of the copy of a former file: its name with "~" at the end.
QString nameOfKept(const QString& strFileName);

/// Copies files that belong together to names that end in "~", before poorer ones replace them. A copy is
/// never replaced by a poorer one.
/// @param listFile    the worth of the first file stands for all; each of the others may be missing
/// @param fnWorth     the worth of a file, such as its number of peaks; 0 when it cannot be read
/// @param nNew        the worth of the new files
/// @param pstrReason  may be null; takes on failure the name of a file and what is wrong
FormerFiles keepFormerFiles(const QStringList& listFile, const std::function<int(const QString&)>& fnWorth,
                            int nNew, QString* pstrReason = nullptr);

}  // namespace tessera
