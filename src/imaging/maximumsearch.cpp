#include "imaging/maximumsearch.h"

#include <cmath>
#include <cstddef>

namespace {

std::size_t firstMaximum(const float* pData, std::size_t nCount)
{
    std::size_t nBest = 0;
    while (nBest < nCount && std::isnan(pData[nBest]))
        nBest++;
    if (nBest == nCount)
        return 0;
    for (std::size_t i = nBest + 1; i < nCount; i++)
        if (pData[i] > pData[nBest])
            nBest = i;
    return nBest;
}

}  // namespace

int FindMaximum(const float* pData, int nWidth, int nHeight, double* pValue, int* pX, int* pY)
{
    if (!pData)
        return 0;
    std::size_t nIndex = 0;
    std::size_t nRow = 1;
    if (nWidth > 0 && nHeight > 0) {
        nRow = std::size_t(nWidth);
        nIndex = firstMaximum(pData, nRow * std::size_t(nHeight));
    }
    if (pValue)
        *pValue = pData[nIndex];
    if (pX)
        *pX = int(nIndex % nRow);
    if (pY)
        *pY = int(nIndex / nRow);
    return 1;
}

int FindMaximumIndex(const float* pData, int n)
{
    return pData && n > 0 ? int(firstMaximum(pData, std::size_t(n))) : 0;
}

int IndexToXY(int nIndex, int nWidth, int nHeight, int* pX, int* pY)
{
    if (nIndex < 0 || nWidth < 1 || nHeight < 0)
        return 0;
    if (pX)
        *pX = nIndex % nWidth;
    if (pY)
        *pY = nIndex / nWidth;
    return 1;
}
