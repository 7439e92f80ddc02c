// Series choice file ("NAME.series.json"): how the series of a project is read, and which of its results were
// made of it as it is read otherwise.
#pragma once

#include "dataset/serieschoice.h"

#include <QString>

#include <optional>

namespace tessera {

/// The file beside a project, or beside the results that have its name.
/// @param strBase  folder, "/" and name
QString seriesChoiceFile(const QString& strBase);

/// What the file tells; a plain choice where there is none.
/// @param pstrReason  may be null; names the file and what is wrong
/// @return none where the file is there and cannot be used
std::optional<SeriesChoice> readSeriesChoice(const QString& strBase, QString* pstrReason = nullptr);

/// Writes the choice, before anything is made by it. Shifts and peaks of that name which stand there are
/// noted as those of the choice before, by their check sums, so that nobody takes them for results of this
/// one. A plain choice without any such results has no file.
/// @return false, with the reason, where the file cannot be written, or is there and is none of these
[[nodiscard]] bool keepSeriesChoice(const QString& strBase, const SeriesChoice& choice,
                                    QString* pstrReason = nullptr);

/// Whether a file of shifts or peaks was made by a choice. What no note tells was made by the one that the
/// file of its name has, or of the series as it comes where there is none.
bool isMadeByChoice(const QString& strFile, const SeriesChoice& choice);

}  // namespace tessera
