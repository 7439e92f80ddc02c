#include "imaging/imagefilters.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

int AddComplex(COMPLEX* pA, const COMPLEX* pB, int n)
{
    if (!pA || !pB)
        return 0;
    for (int i = 0; i < n; i++) {
        pA[i].re += pB[i].re;
        pA[i].im += pB[i].im;
    }
    return 1;
}

int ScaleComplex(COMPLEX* pA, int n, double df)
{
    if (!pA)
        return 0;
    const float f = float(df);
    for (int i = 0; i < n; i++) {
        pA[i].re *= f;
        pA[i].im *= f;
    }
    return 1;
}

int MultiplyByMask(COMPLEX* pA, const char* pMask, int n)
{
    if (!pA || !pMask)
        return 0;
    for (int i = 0; i < n; i++) {
        const float f = static_cast<signed char>(pMask[i]);
        pA[i].re *= f;
        pA[i].im *= f;
    }
    return 1;
}

int MultiplyByFloat(COMPLEX* pA, const float* pF, int n)
{
    if (!pA || !pF)
        return 0;
    for (int i = 0; i < n; i++) {
        pA[i].re *= pF[i];
        pA[i].im *= pF[i];
    }
    return 1;
}

int AddFloat(float* pA, const float* pB, int n)
{
    if (!pA || !pB)
        return 0;
    for (int i = 0; i < n; i++)
        pA[i] += pB[i];
    return 1;
}

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
    for (int y = 0; y < nHeight; y++)
        for (int x = 0; x < nWidth; x++) {
            const double dfDX = x - nWidth / 2;
            const double dfDY = y - nHeight / 2;
            const double dfR2 = dfDX * dfDX + dfDY * dfDY;
            *pMask++ = dfR2 > dfOuter2 || dfInner2 > dfR2 ? 0 : 1;
        }
    return 1;
}
