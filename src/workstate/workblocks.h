// WorkBlocks: the memory used by work states, in which a list shared by several states counts once.
#pragma once

#include "workstate/workstate.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tessera {

/// A block of memory that states may share.
struct WorkBlock {
    const void* pPlace = nullptr;
    std::uint64_t nBytes = 0;
};

/// The memory blocks of those lists and results of a state whose size grows with the data.
std::vector<WorkBlock> blocksOf(const WorkState& state);

/// The memory of several states.
class CWorkBlocks {
public:
    void add(const WorkState& state);     ///< counts the blocks of a state
    void remove(const WorkState& state);  ///< takes back add(); the state must not have changed since
    /// Bytes used by the states, without the blocks that `current`, which is one of them, uses.
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
