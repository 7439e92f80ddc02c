// Manual cell: a*, b*, c* as the user makes them, by direction of view and length.
#pragma once

#include "records/vec3d.h"

#include <QList>

namespace tessera {

/// The cell that the manual way begins with: three vectors of 0.1 Å⁻¹ along the axes x, y and z.
QList<Vec3D> firstManualCell();

/// A vector of the cell at another length, in its direction. One of length 0 has lost its direction, and
/// takes that of the axis it started with.
/// @param nVector   0 for a*, 1 for b*, 2 for c*
/// @param dfLength  Å⁻¹
Vec3D atLength(const Vec3D& vec, int nVector, double dfLength);

}  // namespace tessera
