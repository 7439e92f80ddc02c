#include "frames/framesum.h"

#include "frames/badpixels.h"
#include "records/reason.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tessera {

bool CFrameSum::add(const CImgObj<float>& image, QString* pstrReason)
{
    const int nWidth = image.Width(), nHeight = image.Height();
    if (nWidth < m_nBin || nHeight < m_nBin) {
        return giveReason(pstrReason, QStringLiteral("%1 × %2 pixels, which cannot be binned %3 × %3")
                                          .arg(nWidth)
                                          .arg(nHeight)
                                          .arg(m_nBin));
    }
    if (!m_pSum) {
        auto pSum = std::make_unique<CImgObj<float>>();
        pSum->Create(nWidth / m_nBin, nHeight / m_nBin);
        std::fill_n(pSum->Data(), std::ptrdiff_t(pSum->Width()) * pSum->Height(), 0.0f);
        if (m_dfSaturation > 0) {
            m_vecSaturated.assign(size_t(pSum->Width()) * size_t(pSum->Height()), 0);
        }
        m_pSum = std::move(pSum);
        m_nWidth = nWidth;
        m_nHeight = nHeight;
    } else if (nWidth != m_nWidth || nHeight != m_nHeight) {
        return giveReason(pstrReason,
                          QStringLiteral("%1 × %2 pixels; the frames that it is summed with have %3 × %4")
                              .arg(nWidth)
                              .arg(nHeight)
                              .arg(m_nWidth)
                              .arg(m_nHeight));
    }
    for (int nRow = 0; nRow < m_pSum->Height(); ++nRow) {
        addRow(image, nRow);
    }
    ++m_nAdded;
    return true;
}

void CFrameSum::addRow(const CImgObj<float>& image, int nRow)
{
    const int nColumns = m_pSum->Width();
    float* pSum = m_pSum->Data() + std::ptrdiff_t(nRow) * nColumns;
    for (int nColumn = 0; nColumn < nColumns; ++nColumn) {
        double dfBlock = 0;
        bool bUsable = true, bSaturated = false;
        for (int y = 0; y < m_nBin; ++y) {
            const float* p = image.Data() + (std::ptrdiff_t(nRow) * m_nBin + y) * m_nWidth +
                             std::ptrdiff_t(nColumn) * m_nBin;
            for (int x = 0; x < m_nBin; ++x) {
                bUsable = bUsable && isUsablePixel(p[x]);
                bSaturated = bSaturated || (m_dfSaturation > 0 && double(p[x]) >= m_dfSaturation);
                dfBlock += double(p[x]);
            }
        }
        pSum[nColumn] = bUsable ? float(double(pSum[nColumn]) + dfBlock)
                                : std::numeric_limits<float>::quiet_NaN();
        if (bSaturated) {
            m_vecSaturated[size_t(nRow) * size_t(nColumns) + size_t(nColumn)] = 1;
        }
    }
}

std::unique_ptr<CImgObj<float>> CFrameSum::take()
{
    const double dfLimit = m_dfSaturation * m_nBin * m_nBin * m_nAdded;
    for (size_t i = 0; i < m_vecSaturated.size(); ++i) {
        float& f = m_pSum->Data()[i];
        if (m_vecSaturated[i] && double(f) < dfLimit) {
            f = float(dfLimit);
        }
    }
    return std::move(m_pSum);
}

}  // namespace tessera
