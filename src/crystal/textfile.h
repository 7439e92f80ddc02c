// Writing of small text files, whole or not at all.
#pragma once

#include "records/fileset.h"

#include <QString>

namespace tessera {

/// Writes `strText` as UTF-8 beside `strFileName` and renames it into place.
/// @param pstrReason  may be null; on failure the file's name and what is wrong
/// @param pSet        may be null; else the file becomes one of the set and waits for its commit()
/// @return false for an empty name, a file that can't be opened or a write that fails; a former file
///         then stands as it was
bool writeTextFile(const QString& strFileName, const QString& strText, QString* pstrReason = nullptr,
                   CFileSet* pSet = nullptr);

}  // namespace tessera
