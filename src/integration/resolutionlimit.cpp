#include "integration/resolutionlimit.h"

#include "integration/reflectionflags.h"

#include <algorithm>
#include <cmath>

namespace tessera {

double resolutionLimit(const std::vector<Observation>& listObservation)
{
    const double dfLeast = 0.5;  // mean I/sigma, where CC1/2 is about 0.3 (Karplus & Diederichs 2012,
                                 // Science 336, 1030)
    const int nLeastInShell = 10;
    double dfMost = 0;
    size_t nUsed = 0;
    for (const Observation& observation : listObservation) {
        dfMost = std::max(dfMost, observation.dfDStar);
        nUsed += observation.isMeasured() && !(observation.nFlags & g_nExcludingFlags) ? 1 : 0;
    }
    const int nShells = int(std::clamp<size_t>(nUsed / 40, 1, 20));
    std::vector<double> listSum(static_cast<size_t>(nShells));
    std::vector<int> listCount(static_cast<size_t>(nShells));
    for (const Observation& observation : listObservation) {
        if (observation.isMeasured() && !(observation.nFlags & g_nExcludingFlags)) {
            const int nShell = std::min(nShells - 1,
                                        int(nShells * std::pow(observation.dfDStar / dfMost, 3)));
            listSum[nShell] += observation.dfIntensity / observation.dfSigma;
            ++listCount[nShell];
        }
    }
    int nShell = nShells - 1;
    while (nShell > 0 &&
           (listCount[nShell] < nLeastInShell || listSum[nShell] < dfLeast * listCount[nShell])) {
        --nShell;
    }
    return nShell == nShells - 1 ? dfMost : dfMost * std::cbrt((nShell + 1.0) / nShells);
}

}  // namespace tessera
