#include "imaging/imageconversion.h"

#include <cmath>

namespace tessera {

int ComplexFromFloat(const CImgObj<float>& imgReal, CImgObj<COMPLEX>& imgComplex)
{
    const float* pReal = imgReal.Data();
    if (!pReal || !imgComplex.Create(imgReal.Width(), imgReal.Height())) {
        return 0;
    }
    COMPLEX* pComplex = imgComplex.Data();
    const int nCount = imgReal.Width() * imgReal.Height();
    for (int i = 0; i < nCount; ++i) {
        pComplex[i] = {pReal[i], 0.f};
    }
    return 1;
}

int ComplexToFloat(const COMPLEX* pSource, float* pTarget, int n, int nMode)
{
    if (!pSource || !pTarget) {
        return 0;
    }
    switch (nMode) {
        case 0:
            for (int i = 0; i < n; ++i) {
                pTarget[i] = std::sqrt(pSource[i].re * pSource[i].re + pSource[i].im * pSource[i].im);
            }
            return 1;
        case 1:
            for (int i = 0; i < n; ++i) {
                pTarget[i] = std::atan2(pSource[i].im, pSource[i].re);
            }
            return 1;
        case 2:
            for (int i = 0; i < n; ++i) {
                pTarget[i] = pSource[i].re;
            }
            return 1;
        case 3:
            for (int i = 0; i < n; ++i) {
                pTarget[i] = pSource[i].im;
            }
            return 1;
        default:
            return 0;
    }
}

}  // namespace tessera
