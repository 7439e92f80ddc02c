#include "integration/lorentzfactor.h"

#include "integration/equivalents.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

bool hasSpeed(const Observation& observation)
{
    return std::isfinite(observation.dfSpeed) && observation.dfSpeed > 0;
}

}  // namespace

void applyLorentzFactor(std::vector<Observation>& listObservation)
{
    std::vector<double> listSpeed;
    for (Observation& observation : listObservation) {
        observation.dfLorentz = 1;
        if (hasSpeed(observation) && isUsable(observation, g_nExcludingFlags & ~FlagOutlier)) {
            listSpeed.push_back(observation.dfSpeed);
        }
    }
    if (listSpeed.empty()) {
        return;
    }
    const auto itMiddle = listSpeed.begin() + std::ptrdiff_t(listSpeed.size() / 2);
    std::nth_element(listSpeed.begin(), itMiddle, listSpeed.end());
    const double dfMedian = *itMiddle;
    for (Observation& observation : listObservation) {
        if (hasSpeed(observation)) {
            observation.dfLorentz = observation.dfSpeed / dfMedian;
        }
    }
}

}  // namespace tessera
