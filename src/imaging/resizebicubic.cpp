#include "imaging/resizebicubic.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

float cube(float f)
{
    const float fPositive = f > 0.f ? f : 0.f;
    return fPositive * fPositive * fPositive;
}

// Weight of a sample at the distance t, |t| < 2.
float weight(float t)
{
    return (cube(t + 2.f) - 4.f * cube(t + 1.f) + 6.f * cube(t) - 4.f * cube(t - 1.f)) / 6.f;
}

// The four samples of one axis that a target position is made of.
struct Taps {
    std::array<int, 4> anIndex;
    std::array<float, 4> afWeight;
};

std::vector<Taps> tapsOfAxis(int nTarget, int nSource)
{
    std::vector<Taps> vecTaps(static_cast<std::size_t>(nTarget));
    for (int i = 0; i < nTarget; i++) {
        const float fPosition = float(std::int64_t(i) * nSource) / float(nTarget);
        const float fFraction = fPosition - std::floor(fPosition);
        Taps& taps = vecTaps[std::size_t(i)];
        for (int k = 0; k < 4; k++) {
            const float fOffset = float(k - 1);
            const int nIndex = int(fPosition + fOffset);
            taps.anIndex[std::size_t(k)] = nIndex < 0 ? 0 : (nIndex >= nSource ? nSource - 1 : nIndex);
            taps.afWeight[std::size_t(k)] = weight(fOffset - fFraction);
        }
    }
    return vecTaps;
}

}  // namespace

int ResizeBicubic(float* pTarget, int nTargetWidth, int nTargetHeight, const float* pSource, int nSourceWidth,
                  int nSourceHeight)
{
    if (!pTarget || !pSource || nTargetWidth < 1 || nTargetHeight < 1 || nSourceWidth < 1 ||
        nSourceHeight < 1)
        return 0;
    const std::vector<Taps> vecX = tapsOfAxis(nTargetWidth, nSourceWidth);
    const std::vector<Taps> vecY = tapsOfAxis(nTargetHeight, nSourceHeight);
    for (const Taps& tapsY : vecY)
        for (const Taps& tapsX : vecX) {
            float fSum = 0.f;
            for (std::size_t m = 0; m < 4; m++) {
                const float* pRow = pSource + std::size_t(tapsY.anIndex[m]) * std::size_t(nSourceWidth);
                for (std::size_t n = 0; n < 4; n++)
                    fSum += tapsY.afWeight[m] * tapsX.afWeight[n] * pRow[tapsX.anIndex[n]];
            }
            *pTarget++ = fSum;
        }
    return 1;
}
