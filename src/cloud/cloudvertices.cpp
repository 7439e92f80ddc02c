#include "cloud/cloudvertices.h"

#include <cmath>

namespace tessera {

CloudVertices makeCloudVertices(const QList<Peak3D>& listPoint, const std::vector<float>& vecSize,
                                const PointDisplay& display, float fAlpha, float fScale,
                                const std::vector<char>& vecInside)
{
    CloudVertices vertices;
    vertices.vecVertex.reserve(listPoint.size());
    vertices.m_pnPickName.reserve(listPoint.size());
    for (int nPoint = 0; nPoint < listPoint.size(); ++nPoint) {
        const size_t i = size_t(nPoint);
        if (!vecInside.empty() && !vecInside[i]) {
            continue;
        }
        const Vec3D v = scaled(listPoint[nPoint].point(), fScale);
        if (!display.m_pbPointVisible[i] || !std::isfinite(v.x) || !std::isfinite(v.y) ||
            !std::isfinite(v.z)) {
            continue;
        }
        vertices.vecVertex.push_back({v.x, v.y, v.z, display.m_pfRed[i], display.m_pfGreen[i],
                                      display.m_pfBlue[i], fAlpha, vecSize[i]});
        vertices.m_pnPickName.push_back(nPoint);
    }
    return vertices;
}

}  // namespace tessera
