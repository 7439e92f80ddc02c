#include "imaging/maximumsearch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tessera {

namespace {

bool anyAbove(const float* pData, std::size_t nCount, float f)
{
    int nAbove = 0;
    for (std::size_t i = 0; i < nCount; ++i) {
        nAbove += pData[i] > f ? 1 : 0;
    }
    return nAbove > 0;
}

std::size_t firstMaximum(const float* pData, std::size_t nCount)
{
    std::size_t nBest = 0;
    while (nBest < nCount && std::isnan(pData[nBest])) {
        ++nBest;
    }
    if (nBest == nCount) {
        return 0;
    }
    // Run by run: a loop without branches finds whether a run has a new maximum, and only then its place is
    // looked for.
    constexpr std::size_t nRun = 64;
    float fBest = pData[nBest];
    for (std::size_t nStart = nBest + 1; nStart < nCount; nStart += nRun) {
        const std::size_t nEnd = std::min(nStart + nRun, nCount);
        if (!anyAbove(pData + nStart, nEnd - nStart, fBest)) {
            continue;
        }
        for (std::size_t i = nStart; i < nEnd; ++i) {
            if (pData[i] > fBest) {
                fBest = pData[i];
                nBest = i;
            }
        }
    }
    return nBest;
}

}  // namespace

int FindMaximum(const float* pData, int nWidth, int nHeight, double* pValue, int* pX, int* pY)
{
    if (!pData) {
        return 0;
    }
    std::size_t nIndex = 0;
    std::size_t nRow = 1;
    if (nWidth > 0 && nHeight > 0) {
        nRow = std::size_t(nWidth);
        nIndex = firstMaximum(pData, nRow * std::size_t(nHeight));
    }
    if (pValue) {
        *pValue = pData[nIndex];
    }
    if (pX) {
        *pX = int(nIndex % nRow);
    }
    if (pY) {
        *pY = int(nIndex / nRow);
    }
    return 1;
}

int FindMaximumIndex(const float* pData, int n)
{
    return pData && n > 0 ? int(firstMaximum(pData, std::size_t(n))) : 0;
}

int IndexToXY(int nIndex, int nWidth, int nHeight, int* pX, int* pY)
{
    if (nIndex < 0 || nWidth < 1 || nHeight < 0) {
        return 0;
    }
    if (pX) {
        *pX = nIndex % nWidth;
    }
    if (pY) {
        *pY = nIndex / nWidth;
    }
    return 1;
}

}  // namespace tessera
