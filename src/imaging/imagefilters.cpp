#include "imaging/imagefilters.h"

#include "imaging/imageview.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

namespace tessera {

CGaussianRows::CGaussianRows(int nWidth, int nHeight, float fSigma) : m_nWidth(nWidth), m_nHeight(nHeight)
{
    const float fSigma2 = fSigma * fSigma;
    m_dfNorm = 0.5 / fSigma2 / std::acos(-1.0);
    if (!(m_dfNorm <= FLT_MAX)) {
        return;
    }

    // 2048 entries serve sides up to 4094; larger frames get a table of their own size. An odd side
    // reaches one beyond its half.
    const int nTable = std::max(2048, std::max(nWidth, nHeight) / 2 + 2);
    m_vecTable.resize(nTable, 0.0);
    for (int i = 0; i < nTable; ++i) {
        const double dfI = i;
        m_vecTable[i] = std::exp(-(dfI * dfI) * 0.5 / fSigma2);
    }
}

void CGaussianRows::fill(int nRow, float* pRow) const
{
    if (m_vecTable.empty()) {
        std::fill_n(pRow, m_nWidth, 0.f);
        if (nRow == 0) {
            pRow[0] = 1.f;
        }
        return;
    }
    const double dfRow = m_vecTable[nRow < m_nHeight / 2 ? nRow : m_nHeight - nRow];
    for (int c = 0; c < m_nWidth; ++c) {
        pRow[c] = float(m_dfNorm * m_vecTable[c < m_nWidth / 2 ? c : m_nWidth - c] * dfRow);
    }
}

int MakeGaussian(CImgObj<float>& img, int nWidth, int nHeight, float fSigma)
{
    if (!img.Create(nWidth, nHeight) || !img.Data()) {
        return 0;
    }
    const CGaussianRows rows(nWidth, nHeight, fSigma);
    for (int r = 0; r < nHeight; ++r) {
        rows.fill(r, viewOf(img).row(r));
    }
    return 1;
}

int MakeRingMask(char* pMask, int nWidth, int nHeight, double dfInner, double dfOuter)
{
    if (!pMask) {
        return 0;
    }
    const double dfInner2 = dfInner * dfInner;
    const double dfOuter2 = dfOuter * dfOuter;
    const int nMiddleX = nWidth / 2, nMiddleY = nHeight / 2;
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            const double dfDX = x - nMiddleX;
            const double dfDY = y - nMiddleY;
            const double dfR2 = dfDX * dfDX + dfDY * dfDY;
            *pMask++ = dfR2 > dfOuter2 || dfInner2 > dfR2 ? 0 : 1;
        }
    }
    return 1;
}

}  // namespace tessera
