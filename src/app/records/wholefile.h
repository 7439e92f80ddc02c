// Writing of result files, whole or not at all.
#pragma once

#include <QByteArray>
#include <QSaveFile>
#include <QString>

/// Renames a written file into place, once all of it has reached the disk's file.
///
/// QSaveFile::commit() alone also renames when its last flush has failed, as on a full disk, and so
/// puts a file without its end in the place of a good one.
/// @param pstrReason  may be null; on failure the file's name and what is wrong
/// @return false when anything could not be written; a former file then stands as it was
[[nodiscard]] bool commitWhole(QSaveFile& file, QString* pstrReason = nullptr);

/// Writes `bytes` beside `strFileName` and renames the result into place.
/// @param bText  line feeds become the line ends of the platform
/// @return as commitWhole(); false for an empty name too
[[nodiscard]] bool writeWholeFile(const QString& strFileName, const QByteArray& bytes, bool bText,
                                  QString* pstrReason = nullptr);
