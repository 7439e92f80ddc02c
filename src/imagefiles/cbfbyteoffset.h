// unpackByteOffset: pixels that are packed as the differences of neighbours, most of them of one byte.
#pragma once

#include "imagefiles/plainpixels.h"

#include <cstddef>
#include <cstdint>

namespace tessera {

/// Unpacks x-CBF_BYTE_OFFSET, in which each difference has 1 byte, or behind the lowest number of that length
/// 2, and likewise 4 and 8, little-endian. Differences run on from row to row, and overflow as the elements
/// do. A value below 0 marks a pixel that is not to be used and becomes NaN.
///
/// @param nBytes   from pBytes
/// @param element  of integers
/// @param pfPixel  takes `nCount` pixels
/// @return as many as the bytes hold, at most `nCount`
/// Source: Hall and McMahon (eds.), International Tables for Crystallography G (2006), chapter 5.6.
size_t unpackByteOffset(const uint8_t* pBytes, size_t nBytes, PixelElement element, size_t nCount,
                        float* pfPixel);

}  // namespace tessera
