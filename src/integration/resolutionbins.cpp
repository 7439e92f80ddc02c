#include "integration/resolutionbins.h"

#include <algorithm>
#include <cmath>

namespace tessera {

CResolutionMean::CResolutionMean(const std::vector<double>& listDStar,
                                 const std::vector<double>& listIntensity, int nInShell)
{
    std::vector<size_t> listOrder(std::min(listDStar.size(), listIntensity.size()));
    for (size_t n = 0; n < listOrder.size(); ++n) {
        listOrder[n] = n;
    }
    std::stable_sort(listOrder.begin(), listOrder.end(),
                     [&](size_t one, size_t other) { return listDStar[one] < listDStar[other]; });
    const size_t nShells = std::max<size_t>(1, listOrder.size() / size_t(std::max(1, nInShell)));
    for (size_t nShell = 0; nShell < nShells; ++nShell) {
        const size_t nFirst = listOrder.size() * nShell / nShells;
        const size_t nEnd = listOrder.size() * (nShell + 1) / nShells;
        double dfPlace = 0;
        double dfSum = 0;
        for (size_t n = nFirst; n < nEnd; ++n) {
            dfPlace += listDStar[listOrder[n]] * listDStar[listOrder[n]];
            dfSum += listIntensity[listOrder[n]];
        }
        if (nEnd > nFirst && dfSum > 0 && std::isfinite(dfSum)) {
            m_listPlace.push_back(dfPlace / double(nEnd - nFirst));
            m_listLogarithm.push_back(std::log(dfSum / double(nEnd - nFirst)));
        }
    }
}

double CResolutionMean::mean(double dfDStar) const
{
    if (m_listPlace.empty()) {
        return 1;
    }
    const double dfPlace = dfDStar * dfDStar;
    const auto it = std::upper_bound(m_listPlace.begin(), m_listPlace.end(), dfPlace);
    const auto nAfter = size_t(it - m_listPlace.begin());
    if (nAfter == 0 || nAfter == m_listPlace.size()) {
        return std::exp(nAfter == 0 ? m_listLogarithm.front() : m_listLogarithm.back());
    }
    const double dfPart = (dfPlace - m_listPlace[nAfter - 1]) /
                          (m_listPlace[nAfter] - m_listPlace[nAfter - 1]);
    return std::exp(m_listLogarithm[nAfter - 1] +
                    dfPart * (m_listLogarithm[nAfter] - m_listLogarithm[nAfter - 1]));
}

}  // namespace tessera
