#include "refinement/geometryspot.h"

#include <algorithm>
#include <numeric>

namespace tessera {

int numberChains(std::vector<GeometrySpot>& listSpot, int nGap)
{
    std::vector<size_t> listOrder(listSpot.size());
    std::iota(listOrder.begin(), listOrder.end(), size_t(0));
    std::stable_sort(listOrder.begin(), listOrder.end(), [&](size_t n, size_t m) {
        const GeometrySpot &one = listSpot[n], &other = listSpot[m];
        return one.anIndex != other.anIndex ? one.anIndex < other.anIndex : one.nFrame < other.nFrame;
    });
    int nChains = 0;
    const GeometrySpot* pLast = nullptr;
    for (const size_t n : listOrder) {
        GeometrySpot& spot = listSpot[n];
        if (!pLast || spot.anIndex != pLast->anIndex || spot.nFrame - pLast->nFrame > nGap) {
            ++nChains;
        }
        spot.nChain = nChains - 1;
        pLast = &spot;
    }
    return nChains;
}

}  // namespace tessera
