// Bit shuffling: the bits of like weight of many elements lie together in a file, so that they pack well.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tessera {

/// Puts the bits of a block back in order.
///
/// Byte i/8 of plane 8j + k holds, as its bit i mod 8, bit k of byte j of element i; the planes follow each
/// other, nCount/8 bytes each.
///
/// @param pSource       nCount × nElementSize bytes
/// @param nCount        elements, a multiple of 8
/// @param nElementSize  bytes of an element, 1 or more
/// @param pTarget       as many bytes, elsewhere
/// Source: Masui et al. (2015), Astronomy and Computing 12, 181–190.
void unshuffleBits(const uint8_t* pSource, size_t nCount, size_t nElementSize, uint8_t* pTarget);

/// The same bit by bit in 64-bit words, as for machines without vector instructions.
void unshuffleBitsPlain(const uint8_t* pSource, size_t nCount, size_t nElementSize, uint8_t* pTarget);

/// Elements of a block where the file does not tell, so that it has about 8192 bytes.
size_t bitshuffleBlock(size_t nElementSize);

}  // namespace tessera
