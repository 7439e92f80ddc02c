#include "reciprocal/vectorgrid.h"

#include "reciprocal/sortedplaces.h"

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
    if (!(dfSide > 0)) {
        dfSide = 1;
    }
    std::vector<uint64_t> vecKey;
    std::vector<int> vecFinite;
    vecKey.reserve(vecPoint.size());
    vecFinite.reserve(vecPoint.size());
    for (size_t n = 0; n < vecPoint.size(); ++n) {
        const Vec3D& v = vecPoint[n];
        if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.z)) {
            continue;
        }
        vecKey.push_back((cubeNumber(v.x, dfSide) << (2 * g_nBits)) | (cubeNumber(v.y, dfSide) << g_nBits) |
                         cubeNumber(v.z, dfSide));
        vecFinite.push_back(int(n));
    }
    const std::vector<int> vecPlace = sortedPlaces(vecKey);
    m_vecOrder.reserve(vecKey.size());
    for (const int nPlace : vecPlace) {
        const uint64_t nKey = vecKey[nPlace];
        if (m_vecKey.empty() || m_vecKey.back() != nKey) {
            m_vecKey.push_back(nKey);
            m_vecCell.push_back({int(m_vecOrder.size()), int(m_vecOrder.size())});
        }
        const int nPoint = vecFinite[nPlace];
        m_vecOrder.push_back(nPoint);
        ++m_vecCell.back().nEnd;
        m_vecCellOfPoint[nPoint] = int(m_vecCell.size()) - 1;
    }
}

// The key of the cube before a cube's row of three, the rows numbered as x and y go.
uint64_t CVectorGrid::rowBefore(uint64_t nKey, int nRow)
{
    return nKey + (uint64_t(int64_t(nRow / 3 - 1)) << (2 * g_nBits)) +
           (uint64_t(int64_t(nRow % 3 - 1)) << g_nBits) - 1;
}

void CVectorGrid::neighbours(int nCell, std::vector<Range>& vecRange) const
{
    CWalk(*this).neighbours(nCell, vecRange);
}

void CVectorGrid::CWalk::neighbours(int nCell, std::vector<Range>& vecRange)
{
    const std::vector<uint64_t>& vecKey = m_grid.m_vecKey;
    const uint64_t nKey = vecKey[nCell];
    const bool bForward = m_nLast >= 0 && nCell >= m_nLast;
    m_nLast = nCell;
    vecRange.clear();
    for (int nRow = 0; nRow < 9; ++nRow) {
        const uint64_t nBefore = rowBefore(nKey, nRow);
        int& nBegin = m_anBegin[nRow];
        if (bForward) {
            while (size_t(nBegin) < vecKey.size() && vecKey[nBegin] < nBefore) {
                ++nBegin;
            }
        } else {
            nBegin = int(std::lower_bound(vecKey.begin(), vecKey.end(), nBefore) - vecKey.begin());
        }
        int nEnd = nBegin;
        while (size_t(nEnd) < vecKey.size() && vecKey[nEnd] <= nBefore + 2) {
            ++nEnd;
        }
        if (nEnd > nBegin) {
            vecRange.push_back({nBegin, nEnd});
        }
    }
}

}  // namespace tessera
