#include "reciprocal/integratedpeaks.h"

#include <cmath>

namespace tessera {

const IntegratedPeak* CIntegratedPeaks::nearest(const std::array<int, 3>& anIndex, double dfFrame) const
{
    const IntegratedPeak* pBest = nullptr;
    const auto range = m_map.equal_range(anIndex);
    for (auto it = range.first; it != range.second; ++it) {
        const IntegratedPeak& peak = it->second;
        if (!pBest || std::abs(peak.dfFrame - dfFrame) < std::abs(pBest->dfFrame - dfFrame)) {
            pBest = &peak;
        }
    }
    return pBest;
}

}  // namespace tessera
