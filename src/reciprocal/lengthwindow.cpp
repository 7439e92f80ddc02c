#include "reciprocal/lengthwindow.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

LengthWindow windowOnLengths(const std::vector<double>& vecDStar, double dfLimit)
{
    const int nCount = int(vecDStar.size());
    LengthWindow window;
    window.vecBegin.resize(nCount);
    window.vecEnd.resize(nCount);
    int nBegin = 0;
    int nEnd = 0;
    for (int n = 0; n < nCount; ++n) {
        const double dfDStar = vecDStar[n];
        if (!std::isfinite(dfDStar)) {
            window.vecBegin[n] = n;
            window.vecEnd[n] = n + 1;
            continue;
        }
        while (nBegin < n && !(dfDStar - vecDStar[nBegin] < dfLimit)) {
            ++nBegin;
        }
        nEnd = std::max(nEnd, n + 1);
        while (nEnd < nCount && vecDStar[nEnd] - dfDStar < dfLimit) {
            ++nEnd;
        }
        window.vecBegin[n] = nBegin;
        window.vecEnd[n] = nEnd;
    }
    return window;
}

}  // namespace tessera
