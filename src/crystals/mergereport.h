// The report of a merging: what was read, told apart, merged and left out, for somebody who was not there.
#pragma once

#include "crystals/crystalsjob.h"

#include <QByteArray>
#include <QJsonArray>

namespace tessera {

/// One page of HTML that refers to nothing outside: the groups with their compounds, the tree of the
/// lattices, of each merged group cell, symmetry, its crystals, their tree, quality as tables and curves;
/// what was not read; the command and the files. Of more than fifty merged groups the smaller ones stand in
/// the table alone.
/// @param arrayFile  that it lists: objects with path and size
QByteArray mergeReport(const CrystalsJobOptions& options, const CrystalsJobResult& result,
                       const QJsonArray& arrayFile);

}  // namespace tessera
