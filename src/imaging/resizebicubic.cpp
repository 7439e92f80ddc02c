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

// Target pixels that are made together: an enlargement has many on end of the same samples.
constexpr std::size_t nTogether = 8;

// nCount target pixels of one row, all of the same 16 samples. Each sums its samples in the same order.
template <std::size_t nCount>
void sumSamples(const Taps* pTapsX, const Taps& tapsY, const std::array<const float*, 4>& apRow,
                float* pTarget)
{
    std::array<std::array<float, nCount>, 4> afWeight;
    for (std::size_t i = 0; i < nCount; i++)
        for (std::size_t n = 0; n < 4; n++)
            afWeight[n][i] = pTapsX[i].afWeight[n];
    std::array<float, nCount> afSum{};
    for (std::size_t m = 0; m < 4; m++)
        for (std::size_t n = 0; n < 4; n++) {
            const float fSample = apRow[m][pTapsX->anIndex[n]];
            const float fWeight = tapsY.afWeight[m];
            for (std::size_t i = 0; i < nCount; i++)
                afSum[i] += fWeight * afWeight[n][i] * fSample;
        }
    for (std::size_t i = 0; i < nCount; i++)
        pTarget[i] = afSum[i];
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
    for (const Taps& tapsY : vecY) {
        std::array<const float*, 4> apRow;
        for (std::size_t m = 0; m < 4; m++)
            apRow[m] = pSource + std::size_t(tapsY.anIndex[m]) * std::size_t(nSourceWidth);
        std::size_t i = 0;
        while (i < vecX.size())
            if (i + nTogether <= vecX.size() && vecX[i].anIndex == vecX[i + nTogether - 1].anIndex) {
                sumSamples<nTogether>(&vecX[i], tapsY, apRow, pTarget + i);
                i += nTogether;
            } else {
                sumSamples<1>(&vecX[i], tapsY, apRow, pTarget + i);
                i++;
            }
        pTarget += nTargetWidth;
    }
    return 1;
}
