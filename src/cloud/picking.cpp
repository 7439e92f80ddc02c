#include "cloud/picking.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tessera {

namespace {

// Projection that blows the region up to the whole viewport: gluPickMatrix times the projection.
QMatrix4x4 pickProjection(const PickRegion& region, const QMatrix4x4& projection)
{
    QMatrix4x4 pick;
    const int* pViewport = region.aViewport;
    pick(0, 0) = float(pViewport[2] / region.dfWidth);
    pick(1, 1) = float(pViewport[3] / region.dfHeight);
    pick(0, 3) = float((pViewport[2] - 2.0 * (region.dfX - pViewport[0])) / region.dfWidth);
    pick(1, 3) = float((pViewport[3] - 2.0 * (region.dfY - pViewport[1])) / region.dfHeight);
    return pick * projection;
}

}  // namespace

PickRegion bandRegion(int nStartX, int nStartY, int nEndX, int nEndY, const int* pViewport)
{
    PickRegion region;
    std::copy(pViewport, pViewport + 4, region.aViewport);
    const int nMiddleX = (nStartX + nEndX) / 2, nMiddleY = (nStartY + nEndY) / 2;  // whole pixels
    region.dfX = nMiddleX;
    // The viewport reaches as far over the widget's top as below its bottom: this is the widget's height.
    region.dfY = 2 * pViewport[1] + pViewport[3] - nMiddleY;
    region.dfWidth = std::abs(nEndX - nStartX);
    region.dfHeight = std::abs(nEndY - nStartY);
    return region;
}

QList<int> pickPoints(const CloudVertices& vertices, const CCamera& camera, const PickRegion& region)
{
    QList<int> listPicked;
    if (camera.isFlat() || !(region.dfWidth > 0.0) || !(region.dfHeight > 0.0)) {
        return listPicked;
    }
    const QMatrix4x4 m = pickProjection(region, camera.projection()) * camera.m_fRotation;
    for (size_t i = 0; i < vertices.vecVertex.size(); ++i) {
        const CloudVertex& v = vertices.vecVertex[i];
        bool bInside = true;
        for (int r = 0; r < 3 && bInside; ++r) {
            bInside = std::abs(m(r, 0) * v.x + m(r, 1) * v.y + m(r, 2) * v.z + m(r, 3)) <= 1.f;
        }
        if (bInside) {
            listPicked.append(vertices.m_pnPickName[i]);
        }
    }
    return listPicked;
}

}  // namespace tessera
