#include "frames/localmaxima.h"

#include <algorithm>

namespace tessera {

namespace {

const int g_nRun = 64;  // pixels that are looked through together: few of them reach a threshold

bool anyReaches(const float* p, int nCount, float fThreshold)
{
    int nReaching = 0;
    for (int i = 0; i < nCount; ++i)
        nReaching += p[i] >= fThreshold ? 1 : 0;
    return nReaching > 0;
}

}  // namespace

bool FindLocalMaxima(const CImgObj<float>& img, float fThreshold, QList<double>& listX, QList<double>& listY,
                     double dfFraction)
{
    listX.clear();
    listY.clear();
    const int nWidth = img.Width();
    const int nHeight = img.Height();
    if (!img.Data() || nWidth < 3 || nHeight < 3)
        return true;
    const qint64 nLimit = qint64(dfFraction * (double(nWidth) * double(nHeight)));
    for (int nRow = 1; nRow < nHeight - 1; ++nRow) {
        const float* pRow = img.Data() + size_t(nRow) * size_t(nWidth);
        const float* pAbove = pRow - nWidth;
        const float* pBelow = pRow + nWidth;
        for (int nStart = 1; nStart < nWidth - 1; nStart += g_nRun) {
            const int nEnd = std::min(nStart + g_nRun, nWidth - 1);
            if (!anyReaches(pRow + nStart, nEnd - nStart, fThreshold))
                continue;
            for (int n = nStart; n < nEnd; ++n) {
                const float v = pRow[n];
                if (!(v >= fThreshold))
                    continue;
                if (v > pRow[n - 1] && v > pRow[n + 1] && v > pAbove[n] && v > pBelow[n] &&
                    v > pAbove[n - 1] && v > pAbove[n + 1] && v > pBelow[n + 1] && v > pBelow[n - 1]) {
                    if (listX.size() > nLimit) {
                        listX.clear();
                        listY.clear();
                        return false;
                    }
                    listX.append(n);
                    listY.append(nRow);
                }
            }
        }
    }
    return true;
}

}  // namespace tessera
