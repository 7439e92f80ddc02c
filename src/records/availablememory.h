// availableMemory: how much memory a run may ask for before the machine begins to swap.
#pragma once

#include <cstdint>

namespace tessera {

/// Bytes that can be had now without swapping: what the system reports, and no more than the process's own
/// control group allows. Where nothing is reported, the greatest number.
std::uint64_t availableMemory();

/// Bytes that the limits of this process leave it (`ulimit -v`, `ulimit -d`). Without limits, the greatest
/// number.
std::uint64_t memoryLeftByLimits();

/// Whether `nBytes` can be had with room left for the rest of the work, 256 MB and a sixteenth of the bytes.
/// The system itself promises memory that it has not got, and a process that then uses it takes the machine
/// down with it; so a run that needs much asks here first.
bool hasMemoryFor(std::uint64_t nBytes);

}  // namespace tessera
