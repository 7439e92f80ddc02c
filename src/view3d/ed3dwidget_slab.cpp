// The points that ED3DWidget draws, all or those of a slab.
#include "view3d/ed3dwidget.h"

#include <algorithm>

namespace tessera {

void ED3DWidget::setSlab(const std::optional<CloudSlab>& slab)
{
    if (slab == m_slab) {
        return;
    }
    m_slab = slab;
    if (m_cellFrame) {
        m_vertices.reset();
    }
    update();
}

bool ED3DWidget::isPointInSlab(int nPoint) const
{
    return !m_slab || !m_cellFrame || isInSlab(m_listPoint.at(nPoint).point(), *m_cellFrame, *m_slab);
}

bool ED3DWidget::isPointDrawn(int nPoint) const
{
    return nPoint >= 0 && nPoint < m_listPoint.size() && m_display.m_pbPointVisible[nPoint] &&
           isPointInSlab(nPoint);
}

std::pair<int, int> ED3DWidget::slabLevels(const std::array<int, 3>& anDirection) const
{
    return m_cellFrame ? tessera::slabLevels(m_listPoint, *m_cellFrame, anDirection) : std::make_pair(0, 0);
}

const CloudVertices& ED3DWidget::cloudVertices()
{
    if (m_vertices) {
        return *m_vertices;
    }
    std::vector<char> vecInside;
    if (m_slab && m_cellFrame) {
        vecInside = pointsInSlab(m_listPoint, *m_cellFrame, *m_slab);
    }
    m_vertices = makeCloudVertices(m_listPoint, m_pfPointSize, m_display, m_fPointAlpha, m_fScale, vecInside);
    if (!vecInside.empty()) {
        m_nSlabShown = int(m_vertices->vecVertex.size());
        m_nSlabOf = int(std::count(m_display.m_pbPointVisible.begin(), m_display.m_pbPointVisible.end(), 1));
    }
    return *m_vertices;
}

}  // namespace tessera
