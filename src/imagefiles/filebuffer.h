// Memory that a file is read into, kept for the next file of the same thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tessera {

/// A block of at least `nSize` bytes with undefined content.
///
/// When the last owner lets go, the block is kept for the thread's next file, at most one per thread and
/// of at most 72 MiB: a series has hundreds of frames of one size, and fresh pages from the system cost
/// ten times what reading into known ones does.
///
/// @throws std::bad_alloc
std::shared_ptr<uint8_t> makeFileBuffer(size_t nSize);

}  // namespace tessera
