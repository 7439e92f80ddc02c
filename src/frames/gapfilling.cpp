#include "frames/gapfilling.h"

#include "frames/badpixels.h"

#include <algorithm>
#include <vector>

namespace tessera {

namespace {

/// The mean of what lines through a pixel tell, one entry a pixel of the frame; of equal values their own.
struct Told {
    std::vector<float> vecMean, vecWeight;

    void add(size_t nPixel, double dfValue, double dfWeight)
    {
        const double dfMean = double(vecMean[nPixel]), dfAll = double(vecWeight[nPixel]) + dfWeight;
        vecMean[nPixel] = float(dfMean + (dfValue - dfMean) * (dfWeight / dfAll));
        vecWeight[nPixel] = float(dfAll);
    }
};

/// A run of bad pixels on a line, between two that may be there: the places nFirst to nLast of nLength.
struct BadRun {
    size_t nStart, nStep;  // of the line, and from pixel to pixel
    int nFirst, nLast, nLength;
};

void bridge(const CImgObj<float>& img, const BadRun& run, Told& told)
{
    const auto at = [&](int n) { return run.nStart + size_t(n) * run.nStep; };
    const bool bBefore = run.nFirst > 0, bAfter = run.nLast + 1 < run.nLength;
    const double dfBefore = bBefore ? double(img.Data()[at(run.nFirst - 1)]) : 0;
    const double dfAfter = bAfter ? double(img.Data()[at(run.nLast + 1)]) : 0;
    const int nSpan = run.nLast - run.nFirst + 2;
    for (int n = run.nFirst; n <= run.nLast; ++n) {
        const int nFromBefore = n - run.nFirst + 1, nToAfter = run.nLast + 1 - n;
        if (bBefore && bAfter) {
            told.add(at(n), dfBefore + (dfAfter - dfBefore) * nFromBefore / nSpan, 1.0 / nSpan);
        } else if (bBefore) {
            told.add(at(n), dfBefore, 0.5 / nFromBefore);
        } else if (bAfter) {
            told.add(at(n), dfAfter, 0.5 / nToAfter);
        }
    }
}

/// Looks along all rows and columns; row by row, as the frame lies in memory.
void lookAround(const CImgObj<float>& img, Told& told)
{
    const int nWidth = img.Width(), nHeight = img.Height();
    std::vector<int> vecOpen(size_t(nWidth), -1);  // row where the run of a column began; -1: none
    const auto closeColumn = [&](int x, int nEnd) {
        if (vecOpen[size_t(x)] >= 0) {
            bridge(img, {size_t(x), size_t(nWidth), vecOpen[size_t(x)], nEnd - 1, nHeight}, told);
            vecOpen[size_t(x)] = -1;
        }
    };
    for (int y = 0; y < nHeight; ++y) {
        const size_t nRow = size_t(y) * size_t(nWidth);
        int nFirst = -1;
        for (int x = 0; x < nWidth; ++x) {
            if (isUsablePixel(img.Data()[nRow + size_t(x)])) {
                if (nFirst >= 0) {
                    bridge(img, {nRow, 1, nFirst, x - 1, nWidth}, told);
                    nFirst = -1;
                }
                closeColumn(x, y);
                continue;
            }
            nFirst = nFirst < 0 ? x : nFirst;
            vecOpen[size_t(x)] = vecOpen[size_t(x)] < 0 ? y : vecOpen[size_t(x)];
        }
        if (nFirst >= 0) {
            bridge(img, {nRow, 1, nFirst, nWidth - 1, nWidth}, told);
        }
    }
    for (int x = 0; x < nWidth; ++x) {
        closeColumn(x, nHeight);
    }
}

}  // namespace

qint64 fillBadPixels(CImgObj<float>& img)
{
    const size_t nPixels = size_t(std::max(0, img.Width())) * size_t(std::max(0, img.Height()));
    float* const pf = img.Data();
    const auto countBad = [&] {
        return qint64(std::count_if(pf, pf + nPixels, [](float f) { return !isUsablePixel(f); }));
    };
    const qint64 nBad = countBad();
    if (nBad == qint64(nPixels)) {
        std::fill_n(pf, nPixels, 0.f);
        return nBad;
    }
    // A usable pixel fills its row, and that row reaches into each column: two rounds are enough.
    for (qint64 nLeft = nBad; nLeft > 0; nLeft = countBad()) {
        Told told = {std::vector<float>(nPixels), std::vector<float>(nPixels)};
        lookAround(img, told);
        for (size_t i = 0; i < nPixels; ++i) {
            if (told.vecWeight[i] > 0) {
                pf[i] = told.vecMean[i];
            }
        }
    }
    return nBad;
}

}  // namespace tessera
