// Points and lines of the reciprocal lattice that the 3D view draws.
#pragma once

#include "cloud/camera.h"
#include "geometry/reciprocalbasis.h"
#include "records/vec3d.h"

#include <vector>

namespace tessera {

/// What is drawn of a lattice, at coordinates in Å⁻¹.
struct LatticeGrid {
    std::vector<Vec3D> vecPoint;    ///< lattice points
    std::vector<Vec3D> vecLine[3];  ///< two ends per line, lines along a*, b* and c*
};

/// Most points that a LatticeGrid holds, most lines along each axis, and most points of a lattice that is
/// taken as a whole, whatever is seen of it.
const int g_nMostLatticePoints = 2000000;
const int g_nMostLatticeLines = 100000;
const int g_nMostLatticePointsWhole = 300000;

/// All points h·a* + k·b* + l·c* with h, k, l from minus to plus the ranges, and the lines through them.
///
/// Of a lattice with more points than g_nMostLatticePointsWhole only what may be seen is taken: the points
/// within the view volume and the lines that cross it, whole. Where even these are too many, those with the
/// least greatest index are taken, up to the limit: a guard against minutes of drawing. Points and lines
/// along each axis are limited apart, and a greater range never gives fewer.
///
/// @param basis    with a component that is no number there is nothing
/// @param pnRange  of h, k, l; below 0 counts as 0
/// @param fScale   factor on the coordinates
LatticeGrid makeLatticeGrid(const ReciprocalBasis& basis, const int* pnRange, float fScale,
                            const CCamera& camera);

/// Opacity of the lines along one axis: 0.5, and less where there are more than 9, which is the lattice of
/// one cell to either side. Seen along another axis the lines of a row, about √nLines of them, lie upon one
/// another, so the opacity of a whole row is kept at what three lines have. At least 0.05, that a single line
/// can be seen.
float latticeLineAlpha(size_t nLines);

/// The grid above would depend on the camera.
bool latticeGridNeedsCamera(const int* pnRange);

}  // namespace tessera
