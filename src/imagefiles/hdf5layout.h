// Hdf5Layout: how an HDF5 data set stores its elements.
#pragma once

#include "imagefiles/hdf5chunk.h"
#include "imagefiles/hdf5library.h"

#include <cstdint>
#include <limits>

namespace tessera {

/// The greatest ratio of packing: 1032 for deflate, 255 for LZ4.
constexpr uint64_t g_nHdf5BestRatio = 1100;

/// How a data set stores its elements. It can be used after the data set has been closed.
struct Hdf5Layout {
    std::vector<hsize_t> vecLength;  ///< along the axes, of which the last moves fastest; empty for a scalar
    bool bFloat = false;             ///< floating point of 4 or 8 bytes; else integers
    bool bSigned = false;
    bool bBigEndian = false;
    size_t nElementSize = 0;        ///< 1, 2, 4 or 8 bytes
    std::vector<hsize_t> vecChunk;  ///< size of chunks along the axes; empty where there are none
    std::vector<Hdf5Filter> vecFilter;
    bool bCompact = false;  ///< stored in the header of the object, at most 64 kB
    uint64_t nOffset = 0;   ///< place of elements without chunks, bytes from the beginning of the file
    uint64_t nStored = 0;   ///< bytes of the packed elements in the file
    uint64_t nFileSize = 0;
    uint64_t nFill = 0;  ///< bytes of the fill value, which stands for elements never written
};

/// Reads the layout of a data set of numbers.
/// @return false, with the reason, when its elements cannot be read
bool describeDataSet(hid_t idDataSet, uint64_t nFileSize, Hdf5Layout& layout, QString& strReason);

/// The product of lengths, or the greatest number where that is less.
uint64_t productOf(const std::vector<hsize_t>& vecLength);

/// The value of an element.
double elementAt(const Hdf5Layout& layout, const uint8_t* pElement);

}  // namespace tessera
