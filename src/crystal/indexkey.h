// IndexKey: whole indices as the key of a hash table.
#pragma once

#include "records/hklref.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tessera {

/// h, k, l.
using IndexKey = std::array<int, 3>;

/// The indices of a reflection without its intensity.
inline IndexKey indexKey(const HKLRef& hkl)
{
    return {hkl.nH, hkl.nK, hkl.nL};
}

/// For std::unordered_set and std::unordered_map: spreads neighbours of a lattice over all hashes.
struct IndexKeyHash {
    /// Mixes the three numbers by multiplication.
    size_t operator()(const IndexKey& key) const
    {
        uint64_t nHash = 0;
        for (int n : key) {
            nHash = (nHash ^ uint32_t(n)) * 0x9E3779B97F4A7C15u;
            nHash ^= nHash >> 32;
        }
        return size_t(nHash);
    }
};

}  // namespace tessera
