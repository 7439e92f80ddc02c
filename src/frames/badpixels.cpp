#include "frames/badpixels.h"

#include <iterator>
#include <numeric>

namespace tessera {

double meanOfUsablePixels(const CImgObj<float>& img, qint64& nBad)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    const float* p = img.Data();
    nBad = 0;
    // Sums side by side, over short runs that are looked through first: no branch stands in the way of
    // the additions then. Of bad pixels there are few.
    constexpr qint64 nRun = 64;
    constexpr int nLanes = 8;
    double adfSum[nLanes] = {};
    qint64 i = 0;
    for (; i + nRun <= nPixels; i += nRun) {
        int nBadHere = 0;
        for (qint64 j = 0; j < nRun; ++j)
            nBadHere += isUsablePixel(p[i + j]) ? 0 : 1;
        nBad += nBadHere;
        if (nBadHere == 0) {
            for (qint64 j = 0; j < nRun; j += nLanes)
                for (int k = 0; k < nLanes; ++k)
                    adfSum[k] += double(p[i + j + k]);
            continue;
        }
        for (qint64 j = 0; j < nRun; ++j)
            adfSum[j % nLanes] += isUsablePixel(p[i + j]) ? double(p[i + j]) : 0.0;
    }
    for (; i < nPixels; ++i) {
        if (isUsablePixel(p[i]))
            adfSum[0] += double(p[i]);
        else
            ++nBad;
    }
    const double dfSum = std::accumulate(std::begin(adfSum), std::end(adfSum), 0.0);
    return nBad < nPixels ? dfSum / double(nPixels - nBad) : 0.0;
}

qint64 replaceBadPixels(CImgObj<float>& img)
{
    qint64 nBad = 0;
    const float fMean = float(meanOfUsablePixels(img, nBad));
    if (nBad > 0) {
        const qint64 nPixels = qint64(img.Width()) * img.Height();
        for (qint64 i = 0; i < nPixels; ++i)
            if (!isUsablePixel(img.Data()[i]))
                img.Data()[i] = fMean;
    }
    return nBad;
}

QString badPixelLine(int nFrame, qint64 nBad)
{
    return QStringLiteral("Frame #%L1: %L2 pixels without a usable number took the mean of the others.")
        .arg(nFrame + 1)
        .arg(nBad);
}

}  // namespace tessera
