// Pixel conversion: converts elements of a file to float.
#pragma once

#include <QtEndian>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace tessera {

/// An element of type `T` from its bytes at any address. The bytes are reversed when `bSwap` is set.
template <class T, bool bSwap>
inline T elementFromBytes(const uint8_t* p)
{
    T value;
    if constexpr (!bSwap || sizeof(T) == 1) {
        std::memcpy(&value, p, sizeof(T));
    } else if constexpr (sizeof(T) == 2) {
        quint16 n;
        std::memcpy(&n, p, 2);
        n = qbswap(n);
        std::memcpy(&value, &n, 2);
    } else if constexpr (sizeof(T) == 4) {
        quint32 n;
        std::memcpy(&n, p, 4);
        n = qbswap(n);
        std::memcpy(&value, &n, 4);
    } else {
        static_assert(sizeof(T) == 8, "elements have 1, 2, 4 or 8 bytes");
        quint64 n;
        std::memcpy(&n, p, 8);
        n = qbswap(n);
        std::memcpy(&value, &n, 8);
    }
    return value;
}

/// Converts `nCount` elements of type `T` at any address to `pTarget`, which must not overlap them.
///
/// The inner loop has a fixed length, so that the compiler uses vector instructions at -O2.
template <class T, bool bSwap>
void convertPixels(const uint8_t* __restrict pSource, size_t nCount, float* __restrict pTarget)
{
    if constexpr (std::is_same_v<T, float> && !bSwap) {
        std::memcpy(pTarget, pSource, nCount * sizeof(float));
    } else {
        constexpr size_t nBlock = 64;
        size_t nDone = 0;
        for (; nDone + nBlock <= nCount; nDone += nBlock) {
            const uint8_t* __restrict pIn = pSource + nDone * sizeof(T);
            float* __restrict pOut = pTarget + nDone;
            for (size_t i = 0; i < nBlock; ++i) {
                pOut[i] = static_cast<float>(elementFromBytes<T, bSwap>(pIn + i * sizeof(T)));
            }
        }
        for (; nDone < nCount; ++nDone) {
            pTarget[nDone] = static_cast<float>(elementFromBytes<T, bSwap>(pSource + nDone * sizeof(T)));
        }
    }
}

}  // namespace tessera
