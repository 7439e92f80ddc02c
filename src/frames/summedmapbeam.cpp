#include "frames/summedmapbeam.h"

#include "imaging/acmlfft.h"
#include "imaging/complex.h"
#include "imaging/elementarithmetic.h"
#include "imaging/imageconversion.h"
#include "imaging/imagefilters.h"
#include "imaging/imageshifts.h"
#include "imaging/maximumsearch.h"

namespace tessera {

bool findBeamInSummedMap(const CImgObj<COMPLEX>& imgSumFT, int& nX, int& nY)
{
    const int nWidth = imgSumFT.Width();
    const int nHeight = imgSumFT.Height();
    if (!imgSumFT.Data() || nWidth % 2 != 0 || nHeight % 2 != 0) {
        return false;
    }
    const int nPixels = nWidth * nHeight;
    CAcmlFft fft;
    CImgObj<float> imgReal;
    CImgObj<COMPLEX> imgFT;
    MakeGaussian(imgReal, nWidth, nHeight, 20.f);
    ComplexFromFloat(imgReal, imgFT);
    fft.Transform(imgFT.Data(), nWidth, nHeight, -1);
    ShiftCenter(imgFT.Data(), nWidth, nHeight);
    ComplexToFloat(imgFT.Data(), imgReal.Data(), nPixels, 2);

    imgFT.Copy(imgSumFT);
    MultiplyByFloat(imgFT.Data(), imgReal.Data(), nPixels);
    ShiftCenter(imgFT.Data(), nWidth, nHeight);
    fft.Transform(imgFT.Data(), nWidth, nHeight, 1);
    ComplexToFloat(imgFT.Data(), imgReal.Data(), nPixels, 2);
    IndexToXY(FindMaximumIndex(imgReal.Data(), nPixels), nWidth, nHeight, &nX, &nY);
    return true;
}

}  // namespace tessera
