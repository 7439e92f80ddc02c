#include "frames/badpixels.h"

double meanOfUsablePixels(const CImgObj<float>& img, qint64& nBad)
{
    const qint64 nPixels = qint64(img.Width()) * img.Height();
    const float* p = img.Data();
    nBad = 0;
    // two sums side by side hide the latency of the additions
    double adfSum[2] = {0, 0};
    for (qint64 i = 0; i < nPixels; ++i) {
        if (isUsablePixel(p[i]))
            adfSum[i & 1] += double(p[i]);
        else
            ++nBad;
    }
    const double dfSum = adfSum[0] + adfSum[1];
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
