#include "frames/hotpixels.h"

#include "frames/badpixels.h"

#include <cstddef>
#include <limits>

namespace tessera {

namespace {

// The mean of the neighbours with a usable number, as beside a gap of the detector; NaN if there is none.
float meanOfUsable(const float* pf, std::ptrdiff_t nRow)
{
    double dfSum = 0;
    int nUsable = 0;
    for (const std::ptrdiff_t n :
         {-nRow - 1, -nRow, -nRow + 1, std::ptrdiff_t(-1), std::ptrdiff_t(1), nRow - 1, nRow, nRow + 1}) {
        dfSum += isUsablePixel(pf[n]) ? double(pf[n]) : 0;
        nUsable += isUsablePixel(pf[n]) ? 1 : 0;
    }
    return nUsable > 0 ? float(dfSum / nUsable) : std::numeric_limits<float>::quiet_NaN();
}

}  // namespace

void repairHotPixels(CImgObj<float>& image, const QList<QPoint>& listHotPixel)
{
    float* pfData = image.Data();
    if (!pfData) {
        return;
    }
    const int nWidth = image.Width();
    const int nHeight = image.Height();
    const std::ptrdiff_t nRow = nWidth;
    for (const QPoint& pt : listHotPixel) {
        if (pt.x() < 1 || pt.x() >= nWidth - 1 || pt.y() < 1 || pt.y() >= nHeight - 1) {
            continue;
        }
        float* pf = pfData + pt.y() * nRow + pt.x();
        const double dfSum = static_cast<double>(pf[-nRow - 1]) + pf[-nRow] + pf[-nRow + 1] + pf[-1] + pf[1] +
                             pf[nRow - 1] + pf[nRow] + pf[nRow + 1];
        *pf = isUsablePixel(float(dfSum)) ? static_cast<float>(dfSum * 0.125) : meanOfUsable(pf, nRow);
    }
}

}  // namespace tessera
