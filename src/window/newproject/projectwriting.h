// Project writing: whether a new project file can be written where the user wants it, and writing it.
#pragma once

#include "dataset/serieschoice.h"

#include <QByteArray>
#include <QString>

namespace tessera {

/// Why no project can be written there, in a sentence for the user; empty: it can.
QString problemOfPlace(const QString& strProjectFile);

/// Writes a project file, and the choice of its frames beside it.
///
/// The choice goes first, so that nobody takes results of a former project of that name for those of this
/// choice.
/// @param bytesText   as makeProjectText() makes it
/// @param pstrReason  may be null; on failure what went wrong
[[nodiscard]] bool writeProject(const QString& strProjectFile, const QByteArray& bytesText,
                                const SeriesChoice& choice, QString* pstrReason = nullptr);

}  // namespace tessera
