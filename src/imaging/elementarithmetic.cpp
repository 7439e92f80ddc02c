#include "imaging/elementarithmetic.h"

namespace tessera {

int AddComplex(COMPLEX* pA, const COMPLEX* pB, int n)
{
    if (!pA || !pB) {
        return 0;
    }
    for (int i = 0; i < n; ++i) {
        pA[i].re += pB[i].re;
        pA[i].im += pB[i].im;
    }
    return 1;
}

int ScaleComplex(COMPLEX* pA, int n, double df)
{
    if (!pA) {
        return 0;
    }
    const float f = float(df);
    for (int i = 0; i < n; ++i) {
        pA[i].re *= f;
        pA[i].im *= f;
    }
    return 1;
}

int MultiplyByMask(COMPLEX* pA, const char* pMask, int n)
{
    if (!pA || !pMask) {
        return 0;
    }
    for (int i = 0; i < n; ++i) {
        const float f = static_cast<signed char>(pMask[i]);
        pA[i].re *= f;
        pA[i].im *= f;
    }
    return 1;
}

int MultiplyByFloat(COMPLEX* pA, const float* pF, int n)
{
    if (!pA || !pF) {
        return 0;
    }
    for (int i = 0; i < n; ++i) {
        pA[i].re *= pF[i];
        pA[i].im *= pF[i];
    }
    return 1;
}

int AddFloat(float* pA, const float* pB, int n)
{
    if (!pA || !pB) {
        return 0;
    }
    for (int i = 0; i < n; ++i) {
        pA[i] += pB[i];
    }
    return 1;
}

}  // namespace tessera
