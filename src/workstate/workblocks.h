// WorkBlocks: the memory that work states hold, each list counted once however many states share it.
#pragma once

#include "workstate/workstate.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tessera {

/// A piece of memory that states share by pointing at it.
struct WorkBlock {
    const void* pPlace = nullptr;
    std::uint64_t nBytes = 0;
};

/// The lists and results of a state that grow with the data, by their places in memory.
std::vector<WorkBlock> blocksOf(const WorkState& state);

/// The memory of several states.
class CWorkBlocks {
public:
    void add(const WorkState& state);
    void remove(const WorkState& state);  ///< one that was added, as it was then
    /// Bytes of all that the states hold beside what `current`, one of them, holds as well.
    std::uint64_t bytesBeside(const WorkState& current) const;

private:
    struct Use {
        int nStates = 0;
        std::uint64_t nBytes = 0;
    };
    std::unordered_map<const void*, Use> m_mapUse;
    std::uint64_t m_nBytes = 0;
};

}  // namespace tessera
