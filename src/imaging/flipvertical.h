// FlipVertical: turns a buffer upside down.
#pragma once

#include <algorithm>
#include <cstddef>

namespace tessera {

/// Reverses the order of the rows, in place. @return 1, or 0 for a null buffer or a side below 1
template <typename T>
int FlipVertical(T* pData, int nWidth, int nHeight)
{
    if (!pData || nWidth < 1 || nHeight < 1) {
        return 0;
    }
    for (int nTop = 0, nBottom = nHeight - 1; nTop < nBottom; ++nTop, --nBottom) {
        T* pTop = pData + std::size_t(nTop) * std::size_t(nWidth);
        std::swap_ranges(pTop, pTop + nWidth, pData + std::size_t(nBottom) * std::size_t(nWidth));
    }
    return 1;
}

}  // namespace tessera
