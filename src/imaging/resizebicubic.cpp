#include "imaging/resizebicubic.h"

#include "imaging/imageview.h"
#include "imaging/maximumsearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessera {

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
    for (int i = 0; i < nTarget; ++i) {
        const float fPosition = float(std::int64_t(i) * nSource) / float(nTarget);
        const float fFraction = fPosition - std::floor(fPosition);
        Taps& taps = vecTaps[i];
        for (int k = 0; k < 4; ++k) {
            const float fOffset = float(k - 1);
            const int nIndex = int(fPosition + fOffset);
            taps.anIndex[k] = nIndex < 0 ? 0 : (nIndex >= nSource ? nSource - 1 : nIndex);
            taps.afWeight[k] = weight(fOffset - fFraction);
        }
    }
    return vecTaps;
}

// Target pixels that are made together: an enlargement has many on end of the same samples.
constexpr std::size_t g_nTogether = 8;

// nCount target pixels of one row, all of the same 16 samples. Each sums its samples in the same order.
template <std::size_t nCount>
void sumSamples(const Taps* pTapsX, const Taps& tapsY, const std::array<const float*, 4>& apRow,
                float* pTarget)
{
    std::array<std::array<float, nCount>, 4> afWeight;
    for (std::size_t i = 0; i < nCount; ++i) {
        for (std::size_t n = 0; n < 4; ++n) {
            afWeight[n][i] = pTapsX[i].afWeight[n];
        }
    }
    std::array<float, nCount> afSum{};
    for (std::size_t m = 0; m < 4; ++m) {
        for (std::size_t n = 0; n < 4; ++n) {
            const float fSample = apRow[m][pTapsX->anIndex[n]];
            const float fWeight = tapsY.afWeight[m];
            for (std::size_t i = 0; i < nCount; ++i) {
                afSum[i] += fWeight * afWeight[n][i] * fSample;
            }
        }
    }
    for (std::size_t i = 0; i < nCount; ++i) {
        pTarget[i] = afSum[i];
    }
}

// The source rows of a target row.
std::array<const float*, 4> rowsOf(const Taps& tapsY, const ImageView<const float>& source)
{
    return {source.row(tapsY.anIndex[0]), source.row(tapsY.anIndex[1]), source.row(tapsY.anIndex[2]),
            source.row(tapsY.anIndex[3])};
}

// One target row. Pixels made together for which fnWanted(taps) is false stay below all.
template <class FnWanted>
void resizeRow(const std::vector<Taps>& vecX, const Taps& tapsY, const std::array<const float*, 4>& apRow,
               float* pTarget, const FnWanted& fnWanted)
{
    std::size_t i = 0;
    while (i < vecX.size()) {
        if (i + g_nTogether <= vecX.size() && vecX[i].anIndex == vecX[i + g_nTogether - 1].anIndex) {
            if (fnWanted(vecX[i])) {
                sumSamples<g_nTogether>(&vecX[i], tapsY, apRow, pTarget + i);
            } else {
                std::fill_n(pTarget + i, g_nTogether, -INFINITY);
            }
            i += g_nTogether;
        } else {
            sumSamples<1>(&vecX[i], tapsY, apRow, pTarget + i);
            ++i;
        }
    }
}

bool isUsable(int nTargetWidth, int nTargetHeight, const float* pSource, int nSourceWidth, int nSourceHeight)
{
    return pSource && nTargetWidth >= 1 && nTargetHeight >= 1 && nSourceWidth >= 1 && nSourceHeight >= 1;
}

}  // namespace

int ResizeBicubic(float* pTarget, int nTargetWidth, int nTargetHeight, const float* pSource, int nSourceWidth,
                  int nSourceHeight)
{
    if (!pTarget || !isUsable(nTargetWidth, nTargetHeight, pSource, nSourceWidth, nSourceHeight)) {
        return 0;
    }
    const ImageView<const float> source{pSource, nSourceWidth, nSourceHeight};
    const std::vector<Taps> vecX = tapsOfAxis(nTargetWidth, nSourceWidth);
    const std::vector<Taps> vecY = tapsOfAxis(nTargetHeight, nSourceHeight);
    for (const Taps& tapsY : vecY) {
        resizeRow(vecX, tapsY, rowsOf(tapsY, source), pTarget, [](const Taps&) { return true; });
        pTarget += nTargetWidth;
    }
    return 1;
}

int FindResizedMaximum(int nTargetWidth, int nTargetHeight, const float* pSource, int nSourceWidth,
                       int nSourceHeight, int* pX, int* pY)
{
    if (!isUsable(nTargetWidth, nTargetHeight, pSource, nSourceWidth, nSourceHeight)) {
        return 0;
    }
    const ImageView<const float> source{pSource, nSourceWidth, nSourceHeight};
    const std::vector<Taps> vecX = tapsOfAxis(nTargetWidth, nSourceWidth);
    const std::vector<Taps> vecY = tapsOfAxis(nTargetHeight, nSourceHeight);
    // The maximum reaches what stands at the largest sample, up to rounding. A pixel reaches no more than
    // its largest sample, as the weights are positive and their sum is 1.
    int nLargestX = 0;
    int nLargestY = 0;
    FindMaximum(pSource, nSourceWidth, nSourceHeight, nullptr, &nLargestX, &nLargestY);
    const auto targetOf = [](int n, int nTarget, int nSource) {
        return std::size_t(std::int64_t(n) * nTarget / nSource);
    };
    const Taps& tapsLargest = vecY[targetOf(nLargestY, nTargetHeight, nSourceHeight)];
    float fLeast = 0.f;
    sumSamples<1>(&vecX[targetOf(nLargestX, nTargetWidth, nSourceWidth)], tapsLargest,
                  rowsOf(tapsLargest, source), &fLeast);
    float fSize = 0.f;
    for (int i = 0; i < nSourceWidth * nSourceHeight; ++i) {
        fSize = std::max(fSize, std::abs(pSource[i]));
    }
    fLeast -= 1e-4f * fSize;

    std::vector<float> vecColumn(static_cast<std::size_t>(nSourceWidth));  // maxima of the four source rows
    std::vector<float> vecRow(vecX.size());
    const auto reaches = [&](const Taps& taps) {
        return std::any_of(taps.anIndex.begin(), taps.anIndex.end(),
                           [&](int n) { return !(vecColumn[n] < fLeast); });
    };
    const auto anyReaches = [&] {
        return std::any_of(vecColumn.begin(), vecColumn.end(), [&](float f) { return !(f < fLeast); });
    };
    float fBest = NAN;
    *pX = *pY = 0;
    for (int y = 0; y < nTargetHeight; ++y) {
        const Taps& tapsY = vecY[y];
        const std::array<const float*, 4> apRow = rowsOf(tapsY, source);
        for (std::size_t n = 0; n < vecColumn.size(); ++n) {
            vecColumn[n] = std::max(std::max(apRow[0][n], apRow[1][n]), std::max(apRow[2][n], apRow[3][n]));
        }
        if (!anyReaches()) {
            continue;
        }
        resizeRow(vecX, tapsY, apRow, vecRow.data(), reaches);
        const int x = FindMaximumIndex(vecRow.data(), nTargetWidth);
        const float f = vecRow[x];
        if (f > fBest || (std::isnan(fBest) && !std::isnan(f))) {
            fBest = f;
            *pX = x;
            *pY = y;
        }
    }
    return 1;
}

}  // namespace tessera
