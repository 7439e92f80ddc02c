#include "imagefiles/bitshuffle.h"

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tessera {

namespace {

/// Transposes a matrix of 8 × 8 bits: exchanges bit m of byte k and bit k of byte m.
/// Source: Warren (2012), Hacker's Delight, 2nd ed., section 7-3.
uint64_t transposed(uint64_t n)
{
    uint64_t nChange = (n ^ (n >> 7)) & 0x00AA00AA00AA00AAULL;
    n ^= nChange ^ (nChange << 7);
    nChange = (n ^ (n >> 14)) & 0x0000CCCC0000CCCCULL;
    n ^= nChange ^ (nChange << 14);
    nChange = (n ^ (n >> 28)) & 0x00000000F0F0F0F0ULL;
    return n ^ nChange ^ (nChange << 28);
}

/// Restores the elements 8·nBegin up to 8·nEnd of a block.
void unshuffleGroups(const uint8_t* pSource, size_t nCount, size_t nElementSize, size_t nBegin, size_t nEnd,
                     uint8_t* pTarget)
{
    const size_t nPlane = nCount / 8;
    for (size_t g = nBegin; g < nEnd; ++g) {
        for (size_t j = 0; j < nElementSize; ++j) {
            uint64_t n = 0;
            for (size_t k = 0; k < 8; ++k) {
                n |= uint64_t(pSource[(8 * j + k) * nPlane + g]) << (8 * k);
            }
            n = transposed(n);
            for (size_t m = 0; m < 8; ++m) {
                pTarget[(8 * g + m) * nElementSize + j] = uint8_t(n >> (8 * m));
            }
        }
    }
}

#if defined(__SSE2__)

constexpr size_t g_nGroups = 16;  ///< groups of eight elements; a register takes one byte of each

/// Does the same with two words.
__m128i transposed(__m128i n)
{
    const auto exchanged = [&n](int nShift, int64_t nMask) {
        const __m128i change = _mm_and_si128(_mm_xor_si128(n, _mm_srli_epi64(n, nShift)),
                                             _mm_set1_epi64x(nMask));
        n = _mm_xor_si128(n, _mm_xor_si128(change, _mm_slli_epi64(change, nShift)));
    };
    exchanged(7, 0x00AA00AA00AA00AALL);
    exchanged(14, 0x0000CCCC0000CCCCLL);
    exchanged(28, 0x00000000F0F0F0F0LL);
    return n;
}

/// Gathers one byte of each of 128 consecutive elements from the same 16 bytes of its eight planes.
void gatherBytes(const uint8_t* pPlane, size_t nPlane, __m128i* pOut)
{
    __m128i aRow[8], aPair[8], aFour[8];
    for (size_t k = 0; k < 8; ++k) {
        aRow[k] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pPlane + k * nPlane));
    }
    for (size_t k = 0; k < 4; ++k) {  // aPair[2k], aPair[2k + 1]: planes 2k and 2k + 1, groups 0-7 and 8-15
        aPair[2 * k] = _mm_unpacklo_epi8(aRow[2 * k], aRow[2 * k + 1]);
        aPair[2 * k + 1] = _mm_unpackhi_epi8(aRow[2 * k], aRow[2 * k + 1]);
    }
    for (size_t h = 0; h < 2; ++h) {  // aFour[4h + q]: planes 4h to 4h + 3 of groups 4q to 4q + 3
        for (size_t q = 0; q < 2; ++q) {
            aFour[4 * h + 2 * q] = _mm_unpacklo_epi16(aPair[4 * h + q], aPair[4 * h + 2 + q]);
            aFour[4 * h + 2 * q + 1] = _mm_unpackhi_epi16(aPair[4 * h + q], aPair[4 * h + 2 + q]);
        }
    }
    for (size_t q = 0; q < 4; ++q) {
        pOut[2 * q] = transposed(_mm_unpacklo_epi32(aFour[q], aFour[4 + q]));
        pOut[2 * q + 1] = transposed(_mm_unpackhi_epi32(aFour[q], aFour[4 + q]));
    }
}

void store(uint8_t* pTarget, size_t n, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pTarget) + n, value);
}

/// Restores elements of 1, 2 or 4 bytes, 128 at a time.
/// @return the number of groups of eight that are done
template <size_t nSize>
size_t unshuffleWide(const uint8_t* pSource, size_t nCount, uint8_t* pTarget)
{
    const size_t nPlane = nCount / 8;
    size_t g = 0;
    for (; g + g_nGroups <= nPlane; g += g_nGroups) {
        __m128i aByte[nSize][8];
        for (size_t j = 0; j < nSize; ++j) {
            gatherBytes(pSource + 8 * j * nPlane + g, nPlane, aByte[j]);
        }
        uint8_t* pOut = pTarget + 8 * g * nSize;
        for (size_t i = 0; i < 8; ++i) {  // 16 elements
            if constexpr (nSize == 1) {
                store(pOut, i, aByte[0][i]);
            } else if constexpr (nSize == 2) {
                store(pOut, 2 * i, _mm_unpacklo_epi8(aByte[0][i], aByte[1][i]));
                store(pOut, 2 * i + 1, _mm_unpackhi_epi8(aByte[0][i], aByte[1][i]));
            } else {
                const __m128i low0 = _mm_unpacklo_epi8(aByte[0][i], aByte[1][i]);
                const __m128i low1 = _mm_unpackhi_epi8(aByte[0][i], aByte[1][i]);
                const __m128i high0 = _mm_unpacklo_epi8(aByte[2][i], aByte[3][i]);
                const __m128i high1 = _mm_unpackhi_epi8(aByte[2][i], aByte[3][i]);
                store(pOut, 4 * i, _mm_unpacklo_epi16(low0, high0));
                store(pOut, 4 * i + 1, _mm_unpackhi_epi16(low0, high0));
                store(pOut, 4 * i + 2, _mm_unpacklo_epi16(low1, high1));
                store(pOut, 4 * i + 3, _mm_unpackhi_epi16(low1, high1));
            }
        }
    }
    return g;
}

#endif

}  // namespace

void unshuffleBits(const uint8_t* pSource, size_t nCount, size_t nElementSize, uint8_t* pTarget)
{
    size_t nDone = 0;
#if defined(__SSE2__)
    switch (nElementSize) {
        case 1:
            nDone = unshuffleWide<1>(pSource, nCount, pTarget);
            break;
        case 2:
            nDone = unshuffleWide<2>(pSource, nCount, pTarget);
            break;
        case 4:
            nDone = unshuffleWide<4>(pSource, nCount, pTarget);
            break;
    }
#endif
    unshuffleGroups(pSource, nCount, nElementSize, nDone, nCount / 8, pTarget);
}

void unshuffleBitsPlain(const uint8_t* pSource, size_t nCount, size_t nElementSize, uint8_t* pTarget)
{
    unshuffleGroups(pSource, nCount, nElementSize, 0, nCount / 8, pTarget);
}

size_t bitshuffleBlock(size_t nElementSize)
{
    constexpr size_t nTargetBytes = 8192, nLeast = 128;
    return std::max(nTargetBytes / std::max(nElementSize, size_t(1)) / 8 * 8, nLeast);
}

}  // namespace tessera
