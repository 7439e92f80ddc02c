// HDF5 chunks: decodes the chunks of HDF5 data sets.
#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessera {

/// A filter that was applied to the elements of a data set when they were written.
struct Hdf5Filter {
    int nId = 0;                      ///< number registered with the HDF Group
    std::vector<unsigned> vecClient;  ///< its parameters
};

/// Why chunks with these filters cannot be decoded; empty if they can.
QString unknownFilter(const std::vector<Hdf5Filter>& vecFilter);

/// Undoes the filters of a chunk, the last one first: deflate, shuffle, checksum (which is not verified),
/// LZ4 (32004), bitshuffle with LZ4 or alone (32008).
///
/// @param vecFilter     in the order in which they were applied
/// @param nSkipped      bit i: filter i was not applied to this chunk
/// @param nElementSize  bytes of an element
/// @param pTarget       takes exactly nTarget bytes; undefined on failure
/// @return false, with the reason, when the chunk is damaged or does not have exactly nTarget bytes
/// @throws std::bad_alloc, with two packing filters
bool decodeChunk(const std::vector<Hdf5Filter>& vecFilter, uint32_t nSkipped, size_t nElementSize,
                 const uint8_t* pSource, size_t nSource, uint8_t* pTarget, size_t nTarget,
                 QString& strReason);

}  // namespace tessera
