#include "frames/badpixels.h"

#include <iterator>
#include <numeric>

namespace tessera {

UsableMean meanOfUsablePixels(const CImgObj<float>& img)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    const float* p = img.Data();
    qint64 nBad = 0;
    // Most runs of 64 pixels have no bad pixel. They are checked first and then summed without branches, in
    // eight sums side by side.
    constexpr qint64 nRun = 64;
    constexpr int nLanes = 8;
    double adfSum[nLanes] = {};
    qint64 i = 0;
    for (; i + nRun <= nPixels; i += nRun) {
        int nBadHere = 0;
        for (qint64 j = 0; j < nRun; ++j) {
            nBadHere += isUsablePixel(p[i + j]) ? 0 : 1;
        }
        nBad += nBadHere;
        if (nBadHere == 0) {
            for (qint64 j = 0; j < nRun; j += nLanes) {
                for (int k = 0; k < nLanes; ++k) {
                    adfSum[k] += double(p[i + j + k]);
                }
            }
            continue;
        }
        for (qint64 j = 0; j < nRun; ++j) {
            adfSum[j % nLanes] += isUsablePixel(p[i + j]) ? double(p[i + j]) : 0.0;
        }
    }
    for (; i < nPixels; ++i) {
        if (isUsablePixel(p[i])) {
            adfSum[0] += double(p[i]);
        } else {
            ++nBad;
        }
    }
    const double dfSum = std::accumulate(std::begin(adfSum), std::end(adfSum), 0.0);
    return {nBad < nPixels ? dfSum / double(nPixels - nBad) : 0.0, nBad};
}

void CBadPixelLines::add(int nFrame, qint64 nBad, CRunReport& report)
{
    if (nBad > 0 && nBad != m_nFormer) {
        report.addMessage(
            QStringLiteral("Frame #%L1: %L2 pixels without a usable number were filled from those around "
                           "them.")
                .arg(nFrame + 1)
                .arg(nBad));
    } else if (nBad > 0 && !m_bSaidSo) {
        report.addMessage(QStringLiteral("Frame #%L1 and those after it have the same number of such pixels "
                                         "unless others are named, as with a mask of the detector.")
                              .arg(nFrame + 1));
        m_bSaidSo = true;
    }
    m_nFormer = nBad;
}

}  // namespace tessera
