#include "frames/localmaxima.h"

#include "imaging/imageview.h"

#include <algorithm>

namespace tessera {

namespace {

const int g_nRun = 64;  // pixels that are compared with the threshold together, as few reach it

bool anyReaches(const float* p, int nCount, float fThreshold)
{
    int nReaching = 0;
    for (int i = 0; i < nCount; ++i) {
        nReaching += p[i] >= fThreshold ? 1 : 0;
    }
    return nReaching > 0;
}

/// Appends the maxima of a row with its two neighbours.
/// @return false when there are more than nLimit
bool maximaOfRow(const float* pAbove, const float* pRow, const float* pBelow, int nWidth, int nRow,
                 float fThreshold, qint64 nLimit, QList<double>& listX, QList<double>& listY)
{
    for (int nStart = 1; nStart < nWidth - 1; nStart += g_nRun) {
        const int nEnd = std::min(nStart + g_nRun, nWidth - 1);
        if (!anyReaches(pRow + nStart, nEnd - nStart, fThreshold)) {
            continue;
        }
        for (int n = nStart; n < nEnd; ++n) {
            const float v = pRow[n];
            if (!(v >= fThreshold)) {
                continue;
            }
            if (v > pRow[n - 1] && v > pRow[n + 1] && v > pAbove[n] && v > pBelow[n] && v > pAbove[n - 1] &&
                v > pAbove[n + 1] && v > pBelow[n + 1] && v > pBelow[n - 1]) {
                if (listX.size() > nLimit) {
                    return false;
                }
                listX.append(n);
                listY.append(nRow);
            }
        }
    }
    return true;
}

qint64 mostMaxima(int nWidth, int nHeight, double dfFraction)
{
    return qint64(dfFraction * (double(nWidth) * double(nHeight)));
}

}  // namespace

bool FindLocalMaxima(const CImgObj<float>& img, float fThreshold, QList<double>& listX, QList<double>& listY,
                     double dfFraction)
{
    listX.clear();
    listY.clear();
    const int nWidth = img.Width();
    const int nHeight = img.Height();
    if (!img.Data() || nWidth < 3 || nHeight < 3) {
        return true;
    }
    const qint64 nLimit = mostMaxima(nWidth, nHeight, dfFraction);
    for (int nRow = 1; nRow < nHeight - 1; ++nRow) {
        const float* pRow = viewOf(img).row(nRow);
        if (!maximaOfRow(pRow - nWidth, pRow, pRow + nWidth, nWidth, nRow, fThreshold, nLimit, listX,
                         listY)) {
            listX.clear();
            listY.clear();
            return false;
        }
    }
    return true;
}

CMaximaOfRows::CMaximaOfRows(int nWidth, int nHeight, float fThreshold, double dfFraction)
    : m_nWidth(nWidth), m_fThreshold(fThreshold), m_nLimit(mostMaxima(nWidth, nHeight, dfFraction))
{
    m_vecRow.resize(3 * size_t(std::max(0, nWidth)));
}

void CMaximaOfRows::add(const float* pRow, float fLeast)
{
    float* const pNew = row(m_nRows);
    for (int x = 0; x < m_nWidth; ++x) {
        pNew[x] = pRow[x] < fLeast ? 0.f : pRow[x];
    }
    const int nMiddle = m_nRows++ - 1;
    if (nMiddle < 1 || m_nWidth < 3 || m_bTooMany) {
        return;
    }
    m_bTooMany = !maximaOfRow(row(nMiddle - 1), row(nMiddle), pNew, m_nWidth, nMiddle, m_fThreshold, m_nLimit,
                              m_listX, m_listY);
    if (m_bTooMany) {
        m_listX.clear();
        m_listY.clear();
    }
}

}  // namespace tessera
