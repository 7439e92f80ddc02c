// Points and lines of the reciprocal lattice that the 3D view draws.
#pragma once

#include "cloud/camera.h"
#include "geometry/reciprocalbasis.h"
#include "records/vec3d.h"

#include <vector>

namespace tessera {

/// What is drawn of a lattice: coordinates in Å⁻¹, times the scale given to makeLatticeGrid(), in the frame
/// of its basis.
struct LatticeGrid {
    std::vector<Vec3D> vecPoint;    ///< lattice points
    std::vector<Vec3D> vecLine[3];  ///< two ends per line, lines along a*, b* and c*
};

const int g_nMostLatticePoints = 2000000;  ///< most points that a LatticeGrid holds
const int g_nMostLatticeLines = 100000;    ///< most lines of a LatticeGrid along each of a*, b* and c*
/// Most points of a lattice that is taken as a whole, independently of what can be seen of it.
const int g_nMostLatticePointsWhole = 300000;

/// All points h·a* + k·b* + l·c* with h, k, l from minus to plus the ranges, and the lines through them.
///
/// Of a lattice with more points than g_nMostLatticePointsWhole only what may be seen is taken: the points
/// within the view volume, and the lines that cross it in their full length. If even these are more than the
/// limits, so that drawing would take minutes, those nearest to the origin are taken, by the greatest
/// absolute value of their indices. The limits hold for the points and for the lines along each axis
/// separately. A greater range never gives fewer points or lines.
///
/// @param basis    a basis that is not finite gives an empty grid
/// @param pnRange  three ranges, of h, k, l; below 0 counts as 0
/// @param fScale   factor on the coordinates
/// @param camera   its rotation, pan and zoom determine the view volume
LatticeGrid makeLatticeGrid(const ReciprocalBasis& basis, const int* pnRange, float fScale,
                            const CCamera& camera);

/// Opacity of the lines along one axis, 0.05 to 0.5.
///
/// Up to 9 lines, those of a lattice with one cell to either side, have 0.5. Of more lines, seen along
/// another axis, about √nLines lie one upon another. Together these get the opacity of three lines of 0.5: 1
/// - 0.5³. A single line would be invisible below 0.05.
float latticeLineAlpha(size_t nLines);

/// Whether the grid depends on the camera, because the lattice has more than g_nMostLatticePointsWhole
/// points.
/// @param pnRange  three ranges, of h, k, l
bool latticeGridNeedsCamera(const int* pnRange);

}  // namespace tessera
