#include "imaging/histogram.h"

#include <cmath>

namespace tessera {

int CHistogram::Fill(const float* pData, int n, int nBins)
{
    if (!pData || n < 1 || nBins < 1) {
        return 0;
    }
    int nTotal = 0;
    float fMin = 0.f;
    float fMax = 0.f;
    for (int i = 0; i < n; ++i) {
        const float f = pData[i];
        if (!std::isfinite(f)) {
            continue;
        }
        fMin = nTotal && fMin <= f ? fMin : f;
        fMax = nTotal && fMax >= f ? fMax : f;
        ++nTotal;
    }
    if (nTotal == 0) {
        return 0;
    }

    m_nBins = nBins;
    m_dfMin = fMin;
    m_dfMax = fMax;
    m_nTotal = nTotal;
    m_vecBin.assign(std::size_t(nBins), 0);
    const double dfRange = m_dfMax - m_dfMin;
    if (dfRange == 0.0) {
        m_vecBin[0] = nTotal;
        return 1;
    }
    for (int i = 0; i < n; ++i) {
        const double df = pData[i];
        if (!std::isfinite(df)) {
            continue;
        }
        // Rounding of the quotient must not push the largest sample out of the last bin.
        const int nBin = df == m_dfMax ? nBins - 1 : int((df - m_dfMin) * (nBins - 1) / dfRange);
        ++m_vecBin[nBin];
    }
    return 1;
}

double CHistogram::Upper(double dfP) const
{
    if (m_nBins < 1) {
        return 0.0;
    }
    int i = 0;
    double dfSum = 0.0;
    for (; i < m_nBins; ++i) {
        dfSum += m_vecBin[i];
        if (dfSum / m_nTotal > 1.0 - dfP) {
            break;
        }
    }
    return (m_dfMax - m_dfMin) * (i + 1.0) / m_nBins + m_dfMin;
}

double CHistogram::Lower(double dfP) const
{
    if (m_nBins < 1) {
        return 0.0;
    }
    int i = 0;
    double dfSum = 0.0;
    for (; i < m_nBins; ++i) {
        dfSum += m_vecBin[m_nBins - 1 - i];
        if (dfSum / m_nTotal > 1.0 - dfP) {
            break;
        }
    }
    return (m_dfMax - m_dfMin) * (m_nBins - i) / m_nBins + m_dfMin;
}

}  // namespace tessera
