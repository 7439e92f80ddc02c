// The visible points of a cloud as an array, for drawing and picking.
#pragma once

#include "cloud/pointgroups.h"
#include "records/peak3d.h"

#include <vector>

namespace tessera {

/// A point as it goes to OpenGL.
struct CloudVertex {
    float x, y, z;     ///< Å⁻¹
    float r, g, b, a;  ///< 0 to 1
    float fSize;       ///< pixels before zoom
};

/// The visible points in their order; a vertex's place is its pick name.
struct CloudVertices {
    std::vector<CloudVertex> vecVertex;
    std::vector<int> m_pnPickName;  ///< pick name to point index
};

/// Points at a place that is no number are left out, as no driver has to know what to do with them.
///
/// @param fScale     factor on the coordinates
/// @param vecInside  0 for points that are left out whatever the display says; empty: none
CloudVertices makeCloudVertices(const QList<Peak3D>& listPoint, const std::vector<float>& vecSize,
                                const PointDisplay& display, float fAlpha, float fScale,
                                const std::vector<char>& vecInside = {});

}  // namespace tessera
