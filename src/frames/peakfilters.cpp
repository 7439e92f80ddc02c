#include "frames/peakfilters.h"

#include "imaging/acmlfft.h"
#include "imaging/complex.h"
#include "imaging/imageconversion.h"
#include "imaging/imagefilters.h"

#include <QtGlobal>

#include <cstddef>

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

bool CPeakFilters::fits(const PeakHuntingParameters& parameters, int nWidth, int nHeight) const
{
    return m_nFilterWidth == nWidth && m_nFilterHeight == nHeight &&
           m_dfFilterPeakRadius == parameters.m_dfPeakRadius &&
           m_dfFilterBackgroundRadius == parameters.m_dfBackgroundRadius &&
           m_dfFilterSmoothRadius == parameters.m_dfSmoothRadius;
}

bool updatePeakFilters(const PeakHuntingParameters& parameters, int nWidth, int nHeight,
                       CPeakFilters& filters)
{
    if (nWidth < 1 || nHeight < 1)
        return false;
    if (filters.fits(parameters, nWidth, nHeight))
        return true;
    const bool bResized = filters.m_nFilterWidth != nWidth || filters.m_nFilterHeight != nHeight;
    // Fits nothing until all is made: memory may run out on the way.
    filters.m_nFilterWidth = 0;
    CAcmlFft fft;
    CImgObj<float> imgKernel;
    if (bResized || filters.m_dfFilterSmoothRadius != parameters.m_dfSmoothRadius) {
        MakeGaussian(imgKernel, nWidth, nHeight, float(parameters.m_dfSmoothRadius));
        if (!makeFilter(imgKernel, fft, filters.m_imgFilterSmooth))
            return false;
    }
    if (bResized || filters.m_dfFilterPeakRadius != parameters.m_dfPeakRadius ||
        filters.m_dfFilterBackgroundRadius != parameters.m_dfBackgroundRadius) {
        CImgObj<float> imgWide;
        MakeGaussian(imgKernel, nWidth, nHeight, float(parameters.m_dfPeakRadius));
        MakeGaussian(imgWide, nWidth, nHeight, float(parameters.m_dfBackgroundRadius));
        for (qint64 i = 0; i < qint64(nWidth) * nHeight; ++i)
            imgKernel.Data()[i] -= imgWide.Data()[i];
        if (!makeFilter(imgKernel, fft, filters.m_imgFilterBandPass))
            return false;
    }
    makePair(filters.m_imgFilterSmooth, filters.m_imgFilterBandPass, filters.m_imgFilterPair);
    filters.m_dfFilterPeakRadius = parameters.m_dfPeakRadius;
    filters.m_dfFilterBackgroundRadius = parameters.m_dfBackgroundRadius;
    filters.m_dfFilterSmoothRadius = parameters.m_dfSmoothRadius;
    filters.m_nFilterWidth = nWidth;
    filters.m_nFilterHeight = nHeight;
    return true;
}

}  // namespace tessera
