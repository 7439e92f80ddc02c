#include "frames/median.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

namespace {

const std::ptrdiff_t g_nFewNumbers = 16;  // that std::nth_element sorts by insertion, at once

// Brings the numbers that are less than a limit to the front without a branch, as random numbers mislead the
// processor at every other one.
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
    // Numbers that mislead the choice of the limit are left to the library, which copes with all.
    const int nMostSteps = 40;
    for (int nStep = 0; nStep < nMostSteps && pEnd - pFirst > g_nFewNumbers; ++nStep) {
        const float fLimit = middleOf(*pFirst, pFirst[(pEnd - pFirst) / 2], pEnd[-1]);
        float* const pFrom = bringToFront(pFirst, pEnd, [=](float f) { return f < fLimit; });
        if (pAt < pFrom) {
            pEnd = pFrom;
        } else if (pFrom > pFirst) {
            pFirst = pFrom;
        } else {  // none is less: those that equal the limit have to go for a step onwards
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
