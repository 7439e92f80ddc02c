#include "imagefiles/dmpixels.h"

#include "imagefiles/pixelconvert.h"

namespace tessera {

namespace {

template <bool bSwap>
void pixelsToFloat(int nDataType, const uint8_t* pSource, size_t nCount, float* pfTarget)
{
    switch (nDataType) {
        case 1:
            return convertPixels<int16_t, bSwap>(pSource, nCount, pfTarget);
        case 2:
            return convertPixels<float, bSwap>(pSource, nCount, pfTarget);
        case 6:
            return convertPixels<uint8_t, bSwap>(pSource, nCount, pfTarget);
        case 7:
            return convertPixels<int32_t, bSwap>(pSource, nCount, pfTarget);
        case 9:
            return convertPixels<int8_t, bSwap>(pSource, nCount, pfTarget);
        case 10:
            return convertPixels<uint16_t, bSwap>(pSource, nCount, pfTarget);
        case 11:
            return convertPixels<uint32_t, bSwap>(pSource, nCount, pfTarget);
        case 12:
            return convertPixels<double, bSwap>(pSource, nCount, pfTarget);
    }
}

}  // namespace

size_t dmPixelSize(int nDataType)
{
    switch (nDataType) {
        case 6:
        case 9:
            return 1;
        case 1:
        case 10:
            return 2;
        case 2:
        case 7:
        case 11:
            return 4;
        case 12:
            return 8;
        default:
            return 0;
    }
}

QString dmPixelName(int nDataType)
{
    switch (nDataType) {
        case 3:
        case 13:
            return QStringLiteral(" (complex)");
        case 5:
        case 27:
        case 28:
            return QStringLiteral(" (packed complex)");
        case 8:
        case 23:
            return QStringLiteral(" (colour)");
        case 14:
            return QStringLiteral(" (single bits)");
        default:
            return {};
    }
}

void dmPixelsToFloat(int nDataType, bool bBigEndian, const uint8_t* pSource, size_t nCount, float* pfTarget)
{
    if (bBigEndian != (Q_BYTE_ORDER == Q_BIG_ENDIAN)) {
        pixelsToFloat<true>(nDataType, pSource, nCount, pfTarget);
    } else {
        pixelsToFloat<false>(nDataType, pSource, nCount, pfTarget);
    }
}

}  // namespace tessera
