// The zoom at which a cloud fills the view.
#pragma once

#include "cloud/camera.h"
#include "cloud/cloudvertices.h"

#include <optional>

namespace tessera {

/// The zoom of a camera without pan at which all points are seen and the farthest comes near the edge,
/// however the scene is turned: about the origin, on the shorter side of a widget.
///
/// @return Å⁻¹; none without points, or where all are at the origin
std::optional<float> zoomToFit(const CloudVertices& vertices, const CCamera& camera, int nWidth, int nHeight,
                               bool bKeepAspect);

}  // namespace tessera
