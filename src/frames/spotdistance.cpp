#include "frames/spotdistance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

namespace {

const size_t g_nMostSpots = 300;  // of a frame
const size_t g_nLeastNeighbours = 30;
const double g_dfByChance = 0.1;  // share of the distances that may be shorter

double squared(const QPointF& pt)
{
    return pt.x() * pt.x() + pt.y() * pt.y();
}

bool isNear(const std::vector<QPointF>& vecSpot, const QPointF& ptSpot, double dfDistance)
{
    return std::any_of(vecSpot.begin(), vecSpot.end(),
                       [&](const QPointF& pt) { return squared(pt - ptSpot) < dfDistance * dfDistance; });
}

// Does the same for spots in the order of their columns.
bool isNearInOrder(const std::vector<QPointF>& vecSpot, const QPointF& ptSpot, double dfDistance)
{
    auto it = std::lower_bound(vecSpot.begin(), vecSpot.end(), ptSpot.x() - dfDistance,
                               [](const QPointF& pt, double dfX) { return pt.x() < dfX; });
    for (; it != vecSpot.end() && it->x() <= ptSpot.x() + dfDistance; ++it) {
        if (squared(*it - ptSpot) < dfDistance * dfDistance) {
            return true;
        }
    }
    return false;
}

// Whether half of the other frames have a spot at the same place. False for a few frames.
// @param vecFrame  with the spots in the order of their columns
bool standsStill(const std::vector<std::vector<QPointF>>& vecFrame, size_t nFrame, const QPointF& ptSpot)
{
    const double dfNear = 4;
    size_t nSeen = 0;
    for (size_t i = 0; i < vecFrame.size(); ++i) {
        nSeen += i != nFrame && isNearInOrder(vecFrame[i], ptSpot, dfNear) ? 1 : 0;
    }
    return vecFrame.size() >= 4 && 2 * nSeen >= vecFrame.size() - 1;
}

void addDistances(const std::vector<QPointF>& vecSpot, std::vector<double>& vecDistance)
{
    for (size_t i = 0; i < vecSpot.size() && vecSpot.size() > 1; ++i) {
        double dfLeast = HUGE_VAL;
        for (size_t j = 0; j < vecSpot.size(); ++j) {
            dfLeast = i == j ? dfLeast : std::min(dfLeast, squared(vecSpot[i] - vecSpot[j]));
        }
        vecDistance.push_back(std::sqrt(dfLeast));
    }
}

}  // namespace

double closestDistance(const std::vector<std::vector<QPointF>>& vecFrame, double dfOneSpot)
{
    std::vector<std::vector<QPointF>> vecFirst;
    for (const std::vector<QPointF>& vecSpot : vecFrame) {
        const size_t n = std::min(vecSpot.size(), 4 * g_nMostSpots);
        vecFirst.emplace_back(vecSpot.begin(), vecSpot.begin() + std::ptrdiff_t(n));
    }
    std::vector<std::vector<QPointF>> vecInOrder = vecFirst;
    for (std::vector<QPointF>& vecSpot : vecInOrder) {
        std::sort(vecSpot.begin(), vecSpot.end(),
                  [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); });
    }
    std::vector<double> vecDistance;
    for (size_t i = 0; i < vecFirst.size(); ++i) {
        std::vector<QPointF> vecKept;
        for (const QPointF& ptSpot : vecFirst[i]) {
            if (vecKept.size() < g_nMostSpots && !isNear(vecKept, ptSpot, std::max(3.0, dfOneSpot)) &&
                !standsStill(vecInOrder, i, ptSpot)) {
                vecKept.push_back(ptSpot);
            }
        }
        addDistances(vecKept, vecDistance);
    }
    if (vecDistance.size() < g_nLeastNeighbours) {
        return 0;
    }
    const auto it = vecDistance.begin() + std::ptrdiff_t(g_dfByChance * double(vecDistance.size()));
    std::nth_element(vecDistance.begin(), it, vecDistance.end());
    return *it;
}

}  // namespace tessera
