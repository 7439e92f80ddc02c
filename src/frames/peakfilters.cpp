#include "frames/peakfilters.h"

#include "imaging/acmlfft.h"
#include "imaging/complex.h"
#include "imaging/imagefilters.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <tuple>
#include <vector>

namespace tessera {

namespace {

// Transforms an image that is real and even.
// @param fnRow      fills a row of the image
// @param pSpectrum  takes nWidth × nHeight elements
// @return false where the transform failed
bool transformKernel(const std::function<void(int nRow, float* pRow)>& fnRow, CAcmlFft& fft, int nWidth,
                     int nHeight, COMPLEX* pSpectrum)
{
    std::vector<float> vecRow(static_cast<size_t>(nWidth));
    for (int y = 0; y < nHeight; ++y) {
        fnRow(y, vecRow.data());
        COMPLEX* pRow = pSpectrum + qint64(y) * nWidth;
        for (int x = 0; x < nWidth; ++x) {
            pRow[x] = {vecRow[x], 0.f};
        }
    }
    return fft.Transform(pSpectrum, nWidth, nHeight, -1) != 0;
}

// Copies a filter, the real part of a spectrum, into one member of the pair. A few columns are done at a
// time, so that the cache lines read for the first of them are still there for the others.
void takeFilter(const COMPLEX* pSpectrum, int nWidth, int nHeight, float COMPLEX::*pMember, COMPLEX* pPair)
{
    const int nColumns = nWidth / 2 + 1, nTogether = 8;
    for (int nFirst = 0; nFirst < nColumns; nFirst += nTogether) {
        const int nLast = std::min(nFirst + nTogether, nColumns);
        for (int y = 0; y < nHeight; ++y) {
            for (int x = nFirst; x < nLast; ++x) {
                pPair[CAcmlFft::HalfIndex(x, y, nHeight)].*pMember = pSpectrum[qint64(y) * nWidth + x].re;
            }
        }
    }
}

// Makes both filters and the impulse. Besides the pair only one spectrum is in memory at a time, as the
// kernels are made row by row in its place.
// @return false where a transform failed
bool makeFilters(const PeakFilterNumbers& numbers, CPeakFilters& filters)
{
    const int nWidth = numbers.m_nFilterWidth;
    const int nHeight = numbers.m_nFilterHeight;
    CAcmlFft fft;
    CImgObj<COMPLEX> imgSpectrum;
    filters.m_imgFilterPair.Create(int(CAcmlFft::HalfCount(nWidth, nHeight)), 1);
    filters.m_imgFilterPair.Clear();
    // Has the size of the work space of the frames, which will reuse its memory.
    imgSpectrum.Create(int(2 * CAcmlFft::HalfCount(nWidth, nHeight)), 1);
    COMPLEX *const pSpectrum = imgSpectrum.Data(), *const pPair = filters.m_imgFilterPair.Data();
    if (!pSpectrum || !pPair) {
        return false;
    }
    const CGaussianRows smooth(nWidth, nHeight, float(numbers.m_dfFilterSmoothRadius));
    if (!transformKernel([&](int nRow, float* pRow) { smooth.fill(nRow, pRow); }, fft, nWidth, nHeight,
                         pSpectrum)) {
        return false;
    }
    takeFilter(pSpectrum, nWidth, nHeight, &COMPLEX::re, pPair);
    const CGaussianRows narrow(nWidth, nHeight, float(numbers.m_dfFilterPeakRadius));
    const CGaussianRows wide(nWidth, nHeight, float(numbers.m_dfFilterBackgroundRadius));
    std::vector<float> vecWide(static_cast<size_t>(nWidth));
    const auto difference = [&](int nRow, float* pRow) {
        narrow.fill(nRow, pRow);
        wide.fill(nRow, vecWide.data());
        for (int x = 0; x < nWidth; ++x) {
            pRow[x] -= vecWide[x];
        }
    };
    if (!transformKernel(difference, fft, nWidth, nHeight, pSpectrum)) {
        return false;
    }
    takeFilter(pSpectrum, nWidth, nHeight, &COMPLEX::im, pPair);
    const qint64 nPixels = qint64(nWidth) * nHeight;
    double dfSum = 0;
    for (qint64 i = 0; i < nPixels; ++i) {
        dfSum += double(pSpectrum[i].re);
    }
    filters.m_dfImpulse = std::fabs(dfSum) / double(nPixels);
    return true;
}

}  // namespace

bool PeakFilterNumbers::operator==(const PeakFilterNumbers& other) const
{
    const auto all = [](const PeakFilterNumbers& numbers) {
        // Structured binding makes the compiler check that no member is left out.
        const auto& [dfPeakRadius, dfBackgroundRadius, dfSmoothRadius, nWidth, nHeight] = numbers;
        return std::make_tuple(dfPeakRadius, dfBackgroundRadius, dfSmoothRadius, nWidth, nHeight);
    };
    return all(*this) == all(other);
}

PeakFilterNumbers peakFilterNumbers(const PeakHuntingParameters& parameters, int nWidth, int nHeight)
{
    return {parameters.m_dfPeakRadius, parameters.m_dfBackgroundRadius, parameters.m_dfSmoothRadius, nWidth,
            nHeight};
}

bool CPeakFilters::fits(const PeakHuntingParameters& parameters, int nWidth, int nHeight) const
{
    return PeakFilterNumbers::operator==(peakFilterNumbers(parameters, nWidth, nHeight));
}

bool updatePeakFilters(const PeakHuntingParameters& parameters, int nWidth, int nHeight,
                       CPeakFilters& filters)
{
    if (nWidth < 1 || nHeight < 1) {
        return false;
    }
    if (filters.fits(parameters, nWidth, nHeight)) {
        return true;
    }
    // The filters fit nothing until they are complete, as memory may run out before.
    filters.m_nFilterWidth = 0;
    const PeakFilterNumbers numbers = peakFilterNumbers(parameters, nWidth, nHeight);
    if (!makeFilters(numbers, filters)) {
        return false;
    }
    static_cast<PeakFilterNumbers&>(filters) = numbers;
    return true;
}

}  // namespace tessera
