// Points and lines of the reciprocal lattice that the 3D view draws.
#pragma once

#include "app/records/vec3d.h"
#include "view3d/cloud/camera.h"

#include <QList>

#include <vector>

/// What is drawn of a lattice, at coordinates in Å⁻¹.
struct LatticeGrid {
    std::vector<Vec3D> vecPoint;
    std::vector<Vec3D> vecLine[3];  ///< two ends per line, lines along a*, b* and c*
};

/// Most points that a LatticeGrid holds, and most lines along each axis.
const int g_nMostLatticePoints = 300000;
const int g_nMostLatticeLines = 20000;

/// All points h·a* + k·b* + l·c* with h, k, l from minus to plus the ranges, and the lines through them.
///
/// Of a lattice with more points than g_nMostLatticePoints only what may be seen is taken: the points within
/// the view volume and the lines that cross it, whole. Where points or lines are still too many, the
/// ranges of h, k and l are made smaller about the origin, in proportion, until they aren't.
///
/// @param listCell  a*, b*, c*; any other count, or a vector that is no number: nothing
/// @param pnRange   of h, k, l; below 0 counts as 0
/// @param fScale    factor on the coordinates
LatticeGrid makeLatticeGrid(const QList<Vec3D>& listCell, const int* pnRange, float fScale,
                            const CCamera& camera);

/// The grid above would depend on the camera.
bool latticeGridNeedsCamera(const int* pnRange);
