#include "cloud/cloudfit.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

const double g_dfMargin = 1.05;  // points at the edge are completely visible, with a margin

}  // namespace

std::optional<float> zoomToFit(const CloudVertices& vertices, const CCamera& camera, int nWidth, int nHeight,
                               bool bKeepAspect)
{
    double dfSquare = 0;
    for (const CloudVertex& v : vertices.vecVertex) {
        dfSquare = std::max(dfSquare, double(v.x) * v.x + double(v.y) * v.y + double(v.z) * v.z);
    }
    if (!(dfSquare > 0) || nWidth < 1 || nHeight < 1) {
        return std::nullopt;
    }
    // The view volume is a square on the longer side of the widget.
    const double dfLonger = bKeepAspect ? double(std::max(nWidth, nHeight)) / std::min(nWidth, nHeight) : 1.0;
    const float fZoom = float(std::sqrt(dfSquare) * g_dfMargin * dfLonger - double(camera.m_fViewBound));
    return std::isfinite(fZoom) ? std::optional<float>(fZoom) : std::nullopt;
}

}  // namespace tessera
