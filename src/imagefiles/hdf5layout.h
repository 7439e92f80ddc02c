// Hdf5Layout: how a data set of HDF5 stores its elements.
#pragma once

#include "imagefiles/hdf5chunk.h"
#include "imagefiles/hdf5library.h"

#include <cstdint>
#include <limits>

namespace tessera {

/// What packing can save at the most: deflate 1032, LZ4 255 times.
constexpr uint64_t g_nHdf5BestRatio = 1100;

/// How a data set stores its elements. It outlives the data set's being open.
struct Hdf5Layout {
    std::vector<hsize_t> vecLength;  ///< along the axes, the last one moves fastest; none for a scalar
    bool bFloat = false;             ///< IEEE of 4 or 8 bytes; else integers
    bool bSigned = false;
    bool bBigEndian = false;
    size_t nElementSize = 0;        ///< 1, 2, 4 or 8 bytes
    std::vector<hsize_t> vecChunk;  ///< of chunks, along the axes; empty when there are none
    std::vector<Hdf5Filter> vecFilter;
    bool bCompact = false;  ///< within the header of the object, of 64 kB at most
    uint64_t nOffset = 0;   ///< of unchunked elements, bytes from the beginning of the file
    uint64_t nStored = 0;   ///< bytes in the file, packed
    uint64_t nFileSize = 0;
    uint64_t nFill = 0;  ///< bytes of the element that stands where nothing was written
};

/// Describes a data set of numbers. @return false with the reason when its elements cannot be read
bool describeDataSet(hid_t idDataSet, uint64_t nFileSize, Hdf5Layout& layout, QString& strReason);

/// Product of lengths, or the greatest number where that is less.
uint64_t productOf(const std::vector<hsize_t>& vecLength);

/// An element as a number.
double elementAt(const Hdf5Layout& layout, const uint8_t* pElement);

}  // namespace tessera
