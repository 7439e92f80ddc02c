#include "frames/peakfilters.h"

#include "imaging/acmlfft.h"
#include "imaging/complex.h"
#include "imaging/imageconversion.h"
#include "imaging/imagefilters.h"

#include <QtGlobal>

#include <cstddef>
#include <tuple>

namespace tessera {

namespace {

// The transform of an image that is real and even: its real part. False when there is no transform.
bool makeFilter(const CImgObj<float>& imgKernel, CAcmlFft& fft, CImgObj<float>& imgFilter)
{
    const int nWidth = imgKernel.Width();
    const int nHeight = imgKernel.Height();
    CImgObj<COMPLEX> imgSpectrum;
    ComplexFromFloat(imgKernel, imgSpectrum);
    if (!fft.Transform(imgSpectrum.Data(), nWidth, nHeight, -1))
        return false;
    imgFilter.Create(nWidth, nHeight);
    ComplexToFloat(imgSpectrum.Data(), imgFilter.Data(), nWidth * nHeight, 2);
    return true;
}

// Both filters. False when there is no transform.
bool makeFilters(const PeakFilterNumbers& numbers, CImgObj<float>& imgSmooth, CImgObj<float>& imgBandPass)
{
    const int nWidth = numbers.m_nFilterWidth;
    const int nHeight = numbers.m_nFilterHeight;
    CAcmlFft fft;
    CImgObj<float> imgKernel;
    MakeGaussian(imgKernel, nWidth, nHeight, float(numbers.m_dfFilterSmoothRadius));
    if (!makeFilter(imgKernel, fft, imgSmooth))
        return false;
    CImgObj<float> imgWide;
    MakeGaussian(imgKernel, nWidth, nHeight, float(numbers.m_dfFilterPeakRadius));
    MakeGaussian(imgWide, nWidth, nHeight, float(numbers.m_dfFilterBackgroundRadius));
    for (qint64 i = 0; i < qint64(nWidth) * nHeight; ++i)
        imgKernel.Data()[i] -= imgWide.Data()[i];
    return makeFilter(imgKernel, fft, imgBandPass);
}

// Both filters side by side, column after column up to half the width.
void makePair(const CImgObj<float>& imgSmooth, const CImgObj<float>& imgBandPass, CImgObj<COMPLEX>& imgPair)
{
    const int nWidth = imgSmooth.Width();
    const int nHeight = imgSmooth.Height();
    imgPair.Create(nHeight, int(CAcmlFft::HalfCount(nWidth, nHeight) / std::size_t(nHeight)));
    imgPair.Clear();
    for (qint64 x = 0; x < nWidth / 2 + 1; ++x)
        for (qint64 y = 0; y < nHeight; ++y)
            imgPair.Data()[x * nHeight + y] = {imgSmooth.Data()[y * nWidth + x],
                                               imgBandPass.Data()[y * nWidth + x]};
}

}  // namespace

bool PeakFilterNumbers::operator==(const PeakFilterNumbers& other) const
{
    const auto all = [](const PeakFilterNumbers& numbers) {
        // Taken apart, as this compiles only as long as no member is left out.
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
    if (nWidth < 1 || nHeight < 1)
        return false;
    if (filters.fits(parameters, nWidth, nHeight))
        return true;
    // Fits nothing until all is made: memory may run out on the way.
    filters.m_nFilterWidth = 0;
    const PeakFilterNumbers numbers = peakFilterNumbers(parameters, nWidth, nHeight);
    if (!makeFilters(numbers, filters.m_imgFilterSmooth, filters.m_imgFilterBandPass))
        return false;
    makePair(filters.m_imgFilterSmooth, filters.m_imgFilterBandPass, filters.m_imgFilterPair);
    static_cast<PeakFilterNumbers&>(filters) = numbers;
    return true;
}

}  // namespace tessera
