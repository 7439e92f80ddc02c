#include "imagefiles/cbfbyteoffset.h"

#include <QtEndian>

#include <limits>
#include <type_traits>

namespace tessera {

namespace {

/// Reads a difference of 2, 4 or 8 bytes after a byte with the lowest number.
/// @return false if it is cut off
bool longDifference(const uint8_t*& p, const uint8_t* pEnd, int64_t& nDifference)
{
    const auto take = [&p, pEnd, &nDifference](auto nLowest) {
        using T = decltype(nLowest);
        const bool bWhole = static_cast<size_t>(pEnd - p) >= sizeof(T);
        if (bWhole) {
            nDifference = qFromLittleEndian<T>(p);
            p += sizeof(T);
        }
        return bWhole;
    };
    constexpr int16_t nLowestOf2 = std::numeric_limits<int16_t>::min();
    constexpr int32_t nLowestOf4 = std::numeric_limits<int32_t>::min();
    return take(nLowestOf2) && (nDifference != nLowestOf2 || take(nLowestOf4)) &&
           (nDifference != nLowestOf4 || take(int64_t(0)));
}

template <class T>
size_t unpack(const uint8_t* p, size_t nBytes, size_t nCount, float* pfPixel)
{
    const uint8_t* const pEnd = p + nBytes;
    uint64_t nValue = 0;  // unsigned, as overflow is then defined
    for (size_t i = 0; i < nCount; ++i) {
        if (p == pEnd) {
            return i;
        }
        int64_t nDifference = int64_t(*p++ ^ 0x80) - 0x80;  // sign extension of a byte
        if (nDifference == std::numeric_limits<int8_t>::min() && !longDifference(p, pEnd, nDifference)) {
            return i;
        }
        nValue += static_cast<uint64_t>(nDifference);
        const T value = static_cast<T>(nValue);
        pfPixel[i] = static_cast<float>(value);
        if constexpr (std::is_signed_v<T>) {
            if (value < 0) {
                pfPixel[i] = std::numeric_limits<float>::quiet_NaN();
            }
        }
    }
    return nCount;
}

}  // namespace

size_t unpackByteOffset(const uint8_t* pBytes, size_t nBytes, PixelElement element, size_t nCount,
                        float* pfPixel)
{
    switch (element) {
        case PixelElement::Int8:
            return unpack<int8_t>(pBytes, nBytes, nCount, pfPixel);
        case PixelElement::UInt8:
            return unpack<uint8_t>(pBytes, nBytes, nCount, pfPixel);
        case PixelElement::Int16:
            return unpack<int16_t>(pBytes, nBytes, nCount, pfPixel);
        case PixelElement::UInt16:
            return unpack<uint16_t>(pBytes, nBytes, nCount, pfPixel);
        case PixelElement::Int32:
            return unpack<int32_t>(pBytes, nBytes, nCount, pfPixel);
        case PixelElement::UInt32:
            return unpack<uint32_t>(pBytes, nBytes, nCount, pfPixel);
        case PixelElement::Int64:
            return unpack<int64_t>(pBytes, nBytes, nCount, pfPixel);
        case PixelElement::UInt64:
            return unpack<uint64_t>(pBytes, nBytes, nCount, pfPixel);
        case PixelElement::Float32:
        case PixelElement::Float64:
            break;
    }
    return 0;
}

}  // namespace tessera
