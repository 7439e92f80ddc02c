// Basis vectors: the three shortest vectors that are not co-planar.
#pragma once

#include "records/peak3d.h"

#include <QList>

namespace tessera {

/// Picks a*, b*, c* from averaged difference vectors.
///
/// a* is the shortest, b* the shortest at more than 30° to it, c* the shortest whose normalised triple
/// product with both is above 0.2. b* forms an acute angle with a*, c* with a* + b*; the result is made
/// right-handed by an exchange of b* and c*.
/// @return 0 (fewer than 3 vectors given), 2 (no b* or no c* found) or 3 vectors
QList<Vec3D> findBasisVectors(const QList<Peak3D>& listVector);

}  // namespace tessera
