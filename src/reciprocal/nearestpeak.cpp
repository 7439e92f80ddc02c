#include "reciprocal/nearestpeak.h"

#include <algorithm>
#include <cmath>

namespace tessera {

void CNearestPeak::add(double dfX, double dfY, int nNumber)
{
    if (std::isfinite(dfX) && std::isfinite(dfY)) {
        m_vecPlace.push_back({dfX, dfY, nNumber});
    }
}

void CNearestPeak::prepare()
{
    std::stable_sort(m_vecPlace.begin(), m_vecPlace.end(),
                     [](const Place& a, const Place& b) { return a.dfX < b.dfX; });
}

int CNearestPeak::find(double dfX, double dfY) const
{
    if (!std::isfinite(dfX) || !std::isfinite(dfY) || !(m_dfMaxDistance > 0)) {
        return -1;
    }
    // A little wider than the limit, because the square root of a rounded square may be too small.
    const double dfStrip = m_dfMaxDistance * (1 + 1e-9);
    auto it = std::lower_bound(m_vecPlace.begin(), m_vecPlace.end(), dfX,
                               [dfStrip](const Place& place, double df) { return df - place.dfX > dfStrip; });
    double dfBest = 1e100;
    int nBest = -1;
    for (; it != m_vecPlace.end() && it->dfX - dfX <= dfStrip; ++it) {
        const double dfDX = it->dfX - dfX;
        const double dfDY = it->dfY - dfY;
        const double dfSquare = dfDX * dfDX + dfDY * dfDY;
        if (dfSquare < dfBest || (dfSquare == dfBest && nBest >= 0 && it->nNumber < nBest)) {
            dfBest = dfSquare;
            nBest = it->nNumber;
        }
    }
    return std::sqrt(dfBest) < m_dfMaxDistance ? nBest : -1;
}

}  // namespace tessera
