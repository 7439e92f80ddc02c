#include "imaging/imagefilters.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

namespace tessera {

int MakeGaussian(CImgObj<float>& img, int nWidth, int nHeight, float fSigma)
{
    if (!img.Create(nWidth, nHeight) || !img.Data())
        return 0;
    const float fSigma2 = fSigma * fSigma;
    const double dfNorm = 0.5 / fSigma2 / std::acos(-1.0);
    if (!(dfNorm <= FLT_MAX)) {
        img.Clear();
        img.Data()[0] = 1.f;
        return 1;
    }

    // 2048 entries serve sides up to 4094; larger frames get a table of their own size. An odd side
    // reaches one beyond its half.
    const int nTable = std::max(2048, std::max(nWidth, nHeight) / 2 + 2);
    std::vector<double> vecTable(std::size_t(nTable), 0.0);
    for (int i = 0; i < nTable; i++) {
        const double dfI = i;
        vecTable[std::size_t(i)] = std::exp(-(dfI * dfI) * 0.5 / fSigma2);
    }
    float* pPixel = img.Data();
    for (int r = 0; r < nHeight; r++) {
        const double dfRow = vecTable[std::size_t(r < nHeight / 2 ? r : nHeight - r)];
        for (int c = 0; c < nWidth; c++)
            *pPixel++ = float(dfNorm * vecTable[std::size_t(c < nWidth / 2 ? c : nWidth - c)] * dfRow);
    }
    return 1;
}

int MakeRingMask(char* pMask, int nWidth, int nHeight, double dfInner, double dfOuter)
{
    if (!pMask)
        return 0;
    const double dfInner2 = dfInner * dfInner;
    const double dfOuter2 = dfOuter * dfOuter;
    const int nMiddleX = nWidth / 2, nMiddleY = nHeight / 2;
    for (int y = 0; y < nHeight; y++)
        for (int x = 0; x < nWidth; x++) {
            const double dfDX = x - nMiddleX;
            const double dfDY = y - nMiddleY;
            const double dfR2 = dfDX * dfDX + dfDY * dfDY;
            *pMask++ = dfR2 > dfOuter2 || dfInner2 > dfR2 ? 0 : 1;
        }
    return 1;
}

}  // namespace tessera
