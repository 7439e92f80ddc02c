// availableMemory: how much memory a run can allocate before the machine begins to swap.
#pragma once

#include <cstdint>

namespace tessera {

/// Bytes that can be allocated now without swapping: the smaller of what the system reports and what the
/// control group of the process leaves. The greatest number where neither is known.
std::uint64_t availableMemory();

/// Bytes that the process can still allocate within its limits (`ulimit -v`, `ulimit -d`). The greatest
/// number where there are no limits.
std::uint64_t memoryLeftByLimits();

/// Whether `nBytes` can be allocated, with a reserve of 256 MB and a sixteenth of the bytes for other work.
/// An allocation itself succeeds even where the memory does not exist, and using that memory can make the
/// whole machine unusable. So a run that needs much memory must ask here first.
bool hasMemoryFor(std::uint64_t nBytes);

}  // namespace tessera
