#include "imaging/imageshifts.h"

#include "imaging/imageview.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessera {

namespace {

template <typename T>
int shiftCenter(T* pData, int nWidth, int nHeight)
{
    if (!pData || nWidth < 1 || nHeight < 1) {
        return 0;
    }
    if (nWidth % 2 || nHeight % 2) {
        throw L"ShiftCenter: Width and Height should both be even!";
    }
    const ImageView<T> image{pData, nWidth, nHeight};
    const int nHalfX = nWidth / 2;
    for (int y = 0; y < nHeight / 2; ++y) {
        T* pUpper = image.row(y);
        T* pLower = image.row(y + nHeight / 2);
        std::swap_ranges(pUpper, pUpper + nHalfX, pLower + nHalfX);
        std::swap_ranges(pUpper + nHalfX, pUpper + nWidth, pLower);
    }
    return 1;
}

// Remainder in 0 .. nSize − 1.
int wrapped(int nShift, int nSize)
{
    const int nRest = nShift % nSize;
    return nRest < 0 ? nRest + nSize : nRest;
}

template <typename T>
int cyclicShift(T* pData, int nWidth, int nHeight, int nDX, int nDY)
{
    if (!pData || nWidth < 1 || nHeight < 1) {
        return 0;
    }
    const int nX = wrapped(nDX, nWidth);
    const int nY = wrapped(nDY, nHeight);
    if (nX == 0 && nY == 0) {
        return 1;
    }
    const ImageView<T> image{pData, nWidth, nHeight};
    const std::vector<T> vecOld(pData, pData + image.count());
    const ImageView<const T> old{vecOld.data(), nWidth, nHeight};
    const int nLeft = nWidth -
                      nX;  // columns that stay left of the edge; the others come in on the other side
    for (int y = 0; y < nHeight; ++y) {
        const T* pOld = old.row(y);
        T* pNew = image.row(int((std::int64_t(y) + nY) % nHeight));
        std::copy_n(pOld, nLeft, pNew + nX);
        std::copy_n(pOld + nLeft, nX, pNew);
    }
    return 1;
}

}  // namespace

int ShiftCenter(float* pData, int nWidth, int nHeight)
{
    return shiftCenter(pData, nWidth, nHeight);
}

int ShiftCenter(COMPLEX* pData, int nWidth, int nHeight)
{
    return shiftCenter(pData, nWidth, nHeight);
}

int CyclicShift(float* pData, int nWidth, int nHeight, int nDX, int nDY)
{
    return cyclicShift(pData, nWidth, nHeight, nDX, nDY);
}

int CyclicShift(COMPLEX* pData, int nWidth, int nHeight, int nDX, int nDY)
{
    return cyclicShift(pData, nWidth, nHeight, nDX, nDY);
}

int FourierShift(COMPLEX* pData, int nWidth, int nHeight, double dfDX, double dfDY, bool bCentred)
{
    if (!pData || nWidth < 1 || nHeight < 1) {
        return 0;
    }
    if (!bCentred) {
        ShiftCenter(pData, nWidth, nHeight);
    }

    const double dfTwoPi = 2.0 * std::acos(-1.0);
    const ImageView<COMPLEX> image{pData, nWidth, nHeight};
    const auto turn = [&](int c, int r) {
        COMPLEX& value = image.at(c, r);
        if (value.re == 0.f && value.im == 0.f) {  // most of a low-passed spectrum
            return;
        }
        const int nU = c - nWidth / 2, nV = r - nHeight / 2;
        const double dfU = nU;
        const double dfV = nV;
        const double dfAngle = -dfTwoPi * (dfU * dfDX / nWidth + dfV * dfDY / nHeight);
        const double dfCos = std::cos(dfAngle);
        const double dfSin = std::sin(dfAngle);
        value = {float(value.re * dfCos - value.im * dfSin), float(value.re * dfSin + value.im * dfCos)};
    };

    if (nWidth % 2 || nHeight % 2) {
        for (int r = 0; r < nHeight; ++r) {
            for (int c = 0; c < nWidth; ++c) {
                turn(c, r);
            }
        }
        return 1;
    }
    for (int r = 1; r < nHeight / 2; ++r) {
        for (int c = 1; c < nWidth; ++c) {
            turn(c, r);
            const COMPLEX value = image.at(c, r);
            image.at(nWidth - c, nHeight - r) = {value.re, -value.im};
        }
    }
    for (int c = 1; c < nWidth; ++c) {
        turn(c, 0);
        turn(c, nHeight / 2);
    }
    for (int r = 0; r < nHeight; ++r) {
        turn(0, r);
    }

    if (!bCentred) {
        ShiftCenter(pData, nWidth, nHeight);
    }
    return 1;
}

}  // namespace tessera
