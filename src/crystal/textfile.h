// Writing of small text files, whole or not at all.
#pragma once

#include <QString>

/// Writes `strText` as UTF-8 beside `strFileName` and renames it into place.
/// @return false for an empty name, a file that can't be opened or a write that fails; a former file
///         then stands as it was
bool writeTextFile(const QString& strFileName, const QString& strText);
