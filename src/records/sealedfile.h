// Sealed files: result files that nobody has changed since they were written.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tessera {

/// What a file has to hold, once, for sealed() to work: a word with room for a check sum.
QByteArray sealPlace();

/// The content with the check sum of the rest in the place that is kept for it. The length stays.
QByteArray sealed(const QByteArray& bytes);

/// Whether the check sum is there and right.
bool isSealed(const QByteArray& bytes);

/// Whether a sealed file may be written there: nothing stands there yet, or a file that has kept its seal.
/// What other programs wrote, and what a user changed, is not to be replaced.
bool isFreeForSealed(const QString& strFile);

/// The first of strBase + suffix, strBase_integrated + suffix, strBase_integrated2 + suffix, and so on, that
/// is free for a sealed file.
/// @param listTaken  files that are not to be replaced, sealed or not
/// @return empty where none of a hundred names is
QString nameForSealed(const QString& strBase, const QString& strSuffix, const QStringList& listTaken = {});

}  // namespace tessera
