// The record of a merging: what was read, done, found and written.
#pragma once

#include "crystals/crystalsjob.h"

#include <QJsonArray>
#include <QJsonObject>

namespace tessera {

/// What a record of a merging has under "format".
extern const char* const g_pszMergeFormat;

/// Keys: format, program, command and arguments (that merge the same again; without the folders where these
/// are more than a thousand), options, inputs (crystals with the check sums of what was read, what was not
/// read with the reasons, the file of known cells), crystals, groups (lattice, compound, merging, quality as
/// in the record of a run, files), tree (of the lattices), notes, files, and former: records whose files
/// still stand beside those of this one. No times, so that the same inputs give the same bytes.
///
/// @param former       the record that stands there, or an empty object
/// @param arrayFile    the files that go with it: path, sha256, size
/// @param listRemoved  files of former records that go when this one comes
QJsonObject mergeRecord(const CrystalsJobOptions& options, const CrystalsJobResult& result,
                        const QJsonObject& former, const QJsonArray& arrayFile,
                        const QStringList& listRemoved);

/// What stands in the place of a record while files go into theirs: "unfinished": true, with the files of
/// both mergings, those of the earlier one under "former".
QJsonObject unfinishedRecord(const QJsonArray& arrayFile, const QJsonObject& former);

/// A record and those under its "former", the latest first, none of them with a "former" in it.
QJsonArray generationsOf(const QJsonObject& record);

/// A record that was written before.
/// @return empty where there is none, or something else
QJsonObject readMergeRecord(const QString& strFile);

/// The words of the command that merges the same again; the program first.
QStringList mergeArguments(const CrystalsJobOptions& options, const CrystalsJobResult& result);

}  // namespace tessera
