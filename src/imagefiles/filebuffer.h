// File buffer: memory that a file is read into, which is kept for the next file of the same thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tessera {

/// Returns a block of at least `nSize` bytes with undefined content.
///
/// When its last owner releases it, the block is kept for the next file of the thread, at most one of at
/// most 72 MiB per thread. A series has hundreds of frames of one size, and new pages from the system cost
/// ten times as much as reading into used ones.
///
/// @throws std::bad_alloc
std::shared_ptr<uint8_t> makeFileBuffer(size_t nSize);

}  // namespace tessera
