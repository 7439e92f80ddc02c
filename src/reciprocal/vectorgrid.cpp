#include "reciprocal/vectorgrid.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

// 21 bits per direction, one cube kept free at either border for the search around it.
constexpr int g_nBits = 21;
constexpr double g_dfHalf = double(1 << (g_nBits - 1));

uint64_t cubeNumber(float fValue, double dfSide)
{
    const double dfCube = std::floor(double(fValue) / dfSide);
    return uint64_t(std::min(std::max(dfCube, 2 - g_dfHalf), g_dfHalf - 2) + g_dfHalf);
}

}  // namespace

CVectorGrid::CVectorGrid(const std::vector<Vec3D>& vecPoint, double dfSide)
    : m_vecCellOfPoint(vecPoint.size(), -1)
{
    if (!(dfSide > 0))
        dfSide = 1;
    std::vector<std::pair<uint64_t, int>> vecEntry;
    vecEntry.reserve(vecPoint.size());
    for (size_t n = 0; n < vecPoint.size(); ++n) {
        const Vec3D& v = vecPoint[n];
        if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z))
            continue;
        const uint64_t nKey = (cubeNumber(v.x, dfSide) << (2 * g_nBits)) |
                              (cubeNumber(v.y, dfSide) << g_nBits) | cubeNumber(v.z, dfSide);
        vecEntry.emplace_back(nKey, int(n));
    }
    std::sort(vecEntry.begin(), vecEntry.end());
    m_vecOrder.reserve(vecEntry.size());
    for (const auto& entry : vecEntry) {
        if (m_vecKey.empty() || m_vecKey.back() != entry.first) {
            m_vecKey.push_back(entry.first);
            m_vecCell.push_back({int(m_vecOrder.size()), int(m_vecOrder.size())});
        }
        m_vecOrder.push_back(entry.second);
        ++m_vecCell.back().nEnd;
        m_vecCellOfPoint[size_t(entry.second)] = int(m_vecCell.size()) - 1;
    }
}

void CVectorGrid::neighbours(int nCell, std::vector<int>& vecNeighbour) const
{
    vecNeighbour.clear();
    const uint64_t nKey = m_vecKey[size_t(nCell)];
    for (int nX = -1; nX <= 1; ++nX)
        for (int nY = -1; nY <= 1; ++nY) {
            const uint64_t nRow = nKey + (uint64_t(int64_t(nX)) << (2 * g_nBits)) +
                                  (uint64_t(int64_t(nY)) << g_nBits);
            auto it = std::lower_bound(m_vecKey.begin(), m_vecKey.end(), nRow - 1);
            for (; it != m_vecKey.end() && *it <= nRow + 1; ++it)
                vecNeighbour.push_back(int(it - m_vecKey.begin()));
        }
}

}  // namespace tessera
