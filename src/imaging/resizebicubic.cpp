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

// The cube of f, or 0 where f is negative.
float truncatedCube(float f)
{
    const float fPositive = f > 0.f ? f : 0.f;
    return fPositive * fPositive * fPositive;
}

// The uniform cubic B-spline: the weight of a sample at the signed distance t, in source pixels. The term of
// (t - 2) is missing, so it holds for t up to 2, and no tap lies farther away.
float weight(float t)
{
    return (truncatedCube(t + 2.f) - 4.f * truncatedCube(t + 1.f) + 6.f * truncatedCube(t) -
            4.f * truncatedCube(t - 1.f)) /
           6.f;
}

// The four source pixels along one axis that make up a target pixel, with their weights.
struct Taps {
    std::array<int, 4> anIndex;
    std::array<float, 4> afWeight;
};

// The taps of each target pixel along an axis of nTarget target and nSource source pixels.
std::vector<Taps> tapsOfAxis(int nTarget, int nSource)
{
    std::vector<Taps> vecTaps(static_cast<std::size_t>(nTarget));
    for (int i = 0; i < nTarget; ++i) {
        const float fPosition = float(std::int64_t(i) * nSource) / float(nTarget);
        const float fFraction = fPosition - std::floor(fPosition);
        Taps& taps = vecTaps[i];
        for (int k = 0; k < 4; ++k) {
            const float fOffset = float(k - 1);
            // The conversion rounds down except between -1 and 0, where the index is 0 either way.
            const int nIndex = int(fPosition + fOffset);
            taps.anIndex[k] = nIndex < 0 ? 0 : (nIndex >= nSource ? nSource - 1 : nIndex);
            taps.afWeight[k] = weight(fOffset - fFraction);
        }
    }
    return vecTaps;
}

// Target pixels of a row that are computed together. An enlargement has many neighbours that use the same
// samples; eight floats fill one or two vector registers.
constexpr std::size_t g_nTogether = 8;

// Computes nCount neighbouring target pixels of one row, which all use the same 16 samples and differ in the
// weights along x alone. Each pixel sums its samples in the same order for every nCount.
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

// The four source rows that a target row is made of.
std::array<const float*, 4> rowsOf(const Taps& tapsY, const ImageView<const float>& source)
{
    return {source.row(tapsY.anIndex[0]), source.row(tapsY.anIndex[1]), source.row(tapsY.anIndex[2]),
            source.row(tapsY.anIndex[3])};
}

// Computes one target row. Where fnWanted() is false for the taps along x of pixels that would be computed
// together, these pixels are set to minus infinity instead, so that none of them is a maximum.
template <class FnWanted>
void resizeRow(const std::vector<Taps>& vecX, const Taps& tapsY, const std::array<const float*, 4>& apRow,
               float* pTarget, const FnWanted& fnWanted)
{
    std::size_t i = 0;
    while (i < vecX.size()) {
        // Indices never fall along the row: where the first and the last pixel have the same, all have.
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
    // The maximum is at least fBound, the value of the target pixel at the place of the largest sample. A
    // target pixel is at most its largest sample, as no weight is negative and their sum is 1. So only pixels
    // with a sample of at least fBound can be the maximum. The comparisons are written so that a fBound that
    // is no number excludes no pixel.
    int nLargestX = 0;
    int nLargestY = 0;
    FindMaximum(pSource, nSourceWidth, nSourceHeight, nullptr, &nLargestX, &nLargestY);
    const auto targetOf = [](int n, int nTarget, int nSource) {
        return std::size_t(std::int64_t(n) * nTarget / nSource);
    };
    const Taps& tapsLargest = vecY[targetOf(nLargestY, nTargetHeight, nSourceHeight)];
    float fBound = 0.f;
    sumSamples<1>(&vecX[targetOf(nLargestX, nTargetWidth, nSourceWidth)], tapsLargest,
                  rowsOf(tapsLargest, source), &fBound);
    float fLargestMagnitude = 0.f;
    for (int i = 0; i < nSourceWidth * nSourceHeight; ++i) {
        fLargestMagnitude = std::max(fLargestMagnitude, std::abs(pSource[i]));
    }
    // Room for the rounding of weights and sums of 16 terms, which is some 1e-6 of the largest magnitude.
    fBound -= 1e-4f * fLargestMagnitude;

    // For each source column its largest sample in the four source rows of the present target row.
    std::vector<float> vecColumnMaximum(static_cast<std::size_t>(nSourceWidth));
    std::vector<float> vecRow(vecX.size());
    const auto reaches = [&](const Taps& taps) {
        return std::any_of(taps.anIndex.begin(), taps.anIndex.end(),
                           [&](int n) { return !(vecColumnMaximum[n] < fBound); });
    };
    const auto anyReaches = [&] {
        return std::any_of(vecColumnMaximum.begin(), vecColumnMaximum.end(),
                           [&](float f) { return !(f < fBound); });
    };
    float fBest = NAN;  // until a pixel that is a number has been found
    *pX = *pY = 0;
    for (int y = 0; y < nTargetHeight; ++y) {
        const Taps& tapsY = vecY[y];
        const std::array<const float*, 4> apRow = rowsOf(tapsY, source);
        for (std::size_t n = 0; n < vecColumnMaximum.size(); ++n) {
            vecColumnMaximum[n] = std::max(std::max(apRow[0][n], apRow[1][n]),
                                           std::max(apRow[2][n], apRow[3][n]));
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
