// Sealed files: result files with a check sum, which shows whether they were changed since they were written.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tessera {

/// The place for the check sum: a word that the content given to sealed() must have in it once.
QByteArray sealPlace();

/// Returns the content with the check sum of all other bytes in its place. The length does not change.
QByteArray sealed(const QByteArray& bytes);

/// Whether bytes have a check sum that is right.
bool isSealed(const QByteArray& bytes);

/// Whether a sealed file may be written under a name: no file has it yet, or one whose check sum is right.
/// Files that other programs wrote or that a user changed must not be replaced.
bool isFreeForSealed(const QString& strFile);

/// The first of strBase + suffix, strBase_integrated + suffix, strBase_integrated2 + suffix, and so on, that
/// is free for a sealed file.
/// @param listTaken  files that must not be replaced even if they are sealed
/// @return empty where none of a hundred names is free
QString nameForSealed(const QString& strBase, const QString& strSuffix, const QStringList& listTaken = {});

}  // namespace tessera
