#include "frames/hotpixels.h"

#include <cstddef>

namespace tessera {

void repairHotPixels(CImgObj<float>& image, const QList<QPoint>& listHotPixel)
{
    float* pfData = image.Data();
    if (!pfData)
        return;
    const int nWidth = image.Width();
    const int nHeight = image.Height();
    const std::ptrdiff_t nRow = nWidth;
    for (const QPoint& pt : listHotPixel) {
        if (pt.x() < 1 || pt.x() >= nWidth - 1 || pt.y() < 1 || pt.y() >= nHeight - 1)
            continue;
        float* pf = pfData + pt.y() * nRow + pt.x();
        const double dfSum = static_cast<double>(pf[-nRow - 1]) + pf[-nRow] + pf[-nRow + 1] + pf[-1] + pf[1] +
                             pf[nRow - 1] + pf[nRow] + pf[nRow + 1];
        *pf = static_cast<float>(dfSum * 0.125);
    }
}

}  // namespace tessera
