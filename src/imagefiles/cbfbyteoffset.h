// unpackByteOffset: unpacks pixels stored as differences of neighbours, mostly of one byte.
#pragma once

#include "imagefiles/plainpixels.h"

#include <cstddef>
#include <cstdint>

namespace tessera {

/// Unpacks x-CBF_BYTE_OFFSET. A difference has 1 byte. If that is the lowest number of its length, 2 bytes
/// follow, and likewise 4 and 8, little-endian. Differences continue from row to row, and sums overflow as
/// the elements do. A value below 0 marks an invalid pixel and becomes NaN.
///
/// @param nBytes   number of bytes at pBytes
/// @param element  an integer type
/// @param pfPixel  takes `nCount` pixels
/// @return how many pixels the bytes have, at most `nCount`
/// Source: Hall and McMahon (eds.), International Tables for Crystallography G (2006), chapter 5.6.
size_t unpackByteOffset(const uint8_t* pBytes, size_t nBytes, PixelElement element, size_t nCount,
                        float* pfPixel);

}  // namespace tessera
