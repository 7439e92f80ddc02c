// IndexKey: whole indices as the key of a hash table.
#pragma once

#include "records/hklref.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tessera {

using IndexKey = std::array<int, 3>;

inline IndexKey indexKey(const HKLRef& hkl)
{
    return {hkl.nH, hkl.nK, hkl.nL};
}

struct IndexKeyHash {
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
