// Bit shuffling: restores elements whose bits of equal weight are stored together for better compression.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tessera {

/// Restores the bits of a block.
///
/// Byte i/8 of plane 8j + k has, as its bit i mod 8, bit k of byte j of element i. The planes follow each
/// other, nCount/8 bytes each.
///
/// @param pSource       nCount × nElementSize bytes
/// @param nCount        elements, a multiple of 8
/// @param nElementSize  bytes of an element, at least 1
/// @param pTarget       takes as many bytes; must not overlap pSource
/// Source: Masui et al. (2015), Astronomy and Computing 12, 181–190.
void unshuffleBits(const uint8_t* pSource, size_t nCount, size_t nElementSize, uint8_t* pTarget);

/// Does the same in 64-bit words, for machines without vector instructions.
void unshuffleBitsPlain(const uint8_t* pSource, size_t nCount, size_t nElementSize, uint8_t* pTarget);

/// The number of elements of a block where the file does not give it: about 8192 bytes.
size_t bitshuffleBlock(size_t nElementSize);

}  // namespace tessera
