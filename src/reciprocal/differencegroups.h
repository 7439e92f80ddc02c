// Difference groups: difference vectors of the same indices, or of indices all negated.
#pragma once

#include "crystal/indexkey.h"
#include "records/peak3d.h"

#include <QList>

#include <vector>

namespace tessera {

/// Groups by places in `vecDifference`. Groups come in the order of their first members, members in the
/// order of the list; (h, k, l) and (−h, −k, −l) are of one group.
std::vector<std::vector<int>> groupsOfDifferences(const std::vector<IndexKey>& vecDifference);

/// The same by the rounded indices of records.
QList<QList<int>> groupDifferenceVectors(const QList<Peak3D>& listDifference);

}  // namespace tessera
