#include "frames/median.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

namespace {

const std::ptrdiff_t g_nFewNumbers = 16;  // std::nth_element() sorts so few by insertion, which is fast

// Moves the numbers below a limit to the front. It has no branches, as the processor cannot predict the
// order of random numbers.
template <class Less>
float* bringToFront(float* pFirst, float* pEnd, Less isLess)
{
    float* pNext = pFirst;
    for (float* p = pFirst; p != pEnd; ++p) {
        const float f = *p;
        *p = *pNext;
        *pNext = f;
        pNext += isLess(f) ? 1 : 0;
    }
    return pNext;
}

float middleOf(float a, float b, float c)
{
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

}  // namespace

void partAt(float* pFirst, float* pAt, float* pEnd)
{
    // If the choice of the limit does not work for these numbers, the library does the rest, which works
    // for all.
    const int nMostSteps = 40;
    for (int nStep = 0; nStep < nMostSteps && pEnd - pFirst > g_nFewNumbers; ++nStep) {
        const float fLimit = middleOf(*pFirst, pFirst[(pEnd - pFirst) / 2], pEnd[-1]);
        float* const pFrom = bringToFront(pFirst, pEnd, [=](float f) { return f < fLimit; });
        if (pAt < pFrom) {
            pEnd = pFrom;
        } else if (pFrom > pFirst) {
            pFirst = pFrom;
        } else {  // none is less; numbers equal to the limit are moved, so that there is progress
            pFirst = bringToFront(pFrom, pEnd, [=](float f) { return f <= fLimit; });
            if (pAt < pFirst) {
                return;
            }
        }
    }
    std::nth_element(pFirst, pAt, pEnd);
}

float medianOf(std::vector<float>& vecNumber)
{
    float* const pMiddle = vecNumber.data() + vecNumber.size() / 2;
    partAt(vecNumber.data(), pMiddle, vecNumber.data() + vecNumber.size());
    return *pMiddle;
}

RobustSpread robustSpread(std::vector<float> vecNumber)
{
    if (vecNumber.empty()) {
        return {};
    }
    const float fMedian = medianOf(vecNumber);
    for (float& f : vecNumber) {
        f = std::fabs(f - fMedian);
    }
    return {fMedian, 1.4826 * double(medianOf(vecNumber))};
}

}  // namespace tessera
