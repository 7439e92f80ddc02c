#include "imaging/contrast.h"

#include "imaging/histogram.h"

#include <algorithm>

namespace tessera {

int GetContrastLimits(const float* pData, int n, float fPLow, float fPHigh, int nBins, double* pLow,
                      double* pHigh)
{
    CHistogram histogram;
    if (!histogram.Fill(pData, n, nBins)) {
        return 0;
    }
    if (pHigh) {
        *pHigh = histogram.Upper(fPHigh);
    }
    if (pLow) {
        *pLow = histogram.Lower(fPLow);
    }
    return 1;
}

int autoContrastLimits(const float* pData, int n, double* pLow, double* pHigh)
{
    double dfLow = 0.0;
    double dfHigh = 0.0;
    if (!GetContrastLimits(pData, n, 0.0001f, 0.001f, 1000, &dfLow, &dfHigh)) {
        return 0;
    }
    if (pLow) {
        *pLow = dfLow - 0.15 * (dfHigh - dfLow);
    }
    if (pHigh) {
        *pHigh = dfHigh;
    }
    return 1;
}

int FloatToByte(const float* pSource, unsigned char* pTarget, int n, float fLow, float fHigh, float fOutMin,
                float fOutMax)
{
    if (!pSource || !pTarget) {
        return 0;
    }
    // The outer bounds keep every conversion below inside the range of its target.
    fOutMin = fOutMin > 0.f ? std::min(fOutMin, 255.f) : 0.f;
    fOutMax = fOutMax < 255.f ? std::max(fOutMax, 0.f) : 255.f;
    const float fScale = fHigh == fLow ? 0.f : (fOutMax - fOutMin) / (fHigh - fLow);
    const double dfScale = fScale;
    const int nOutMin = int(fOutMin);
    const unsigned char byteMax = static_cast<unsigned char>(fOutMax);
    for (int i = 0; i < n; ++i) {
        const double df = (pSource[i] - fLow) * dfScale + fOutMin;
        // 256 and more is above fOutMax, below −1 is under fOutMin: neither needs its exact integer.
        int t = df < 256.0 ? (df > -1.0 ? int(df) : -1) : (df >= 256.0 ? 256 : -1);
        if (fOutMin > float(t)) {
            t = nOutMin;
        }
        pTarget[i] = float(t) > fOutMax ? byteMax : static_cast<unsigned char>(t);
    }
    return 1;
}

int FloatToByteScaled(const float* pSource, unsigned char* pTarget, int n, float fPLow, float fPHigh,
                      int nBins, float fOutMin, float fOutMax)
{
    if (!pSource || !pTarget || n < 1 || nBins < 1) {
        return 0;
    }
    double dfLow = 0.0;
    double dfHigh = 0.0;
    const int nFilled = GetContrastLimits(pSource, n, fPLow, fPHigh, nBins, &dfLow, &dfHigh);
    FloatToByte(pSource, pTarget, n, float(dfLow), float(dfHigh), fOutMin, fOutMax);
    return nFilled;
}

}  // namespace tessera
