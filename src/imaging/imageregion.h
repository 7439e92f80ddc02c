// CopyRegion: cuts a rectangle out of a buffer.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tessera {

/// Copies the rectangle of w × h elements at (x, y) to a tightly packed target.
/// @return 1; 0, with nothing copied, for a null buffer or when a corner lies outside the source. With
///         h < 1 there is nothing to copy and the result is 1
template <typename T>
int CopyRegion(const T* pSource, int nSourceWidth, int nSourceHeight, T* pTarget, int x, int y, int w, int h)
{
    if (!pSource || !pTarget) {
        return 0;
    }
    if (h < 1) {
        return 1;
    }
    const auto inside = [&](std::int64_t nX, std::int64_t nY) {
        return nX >= 0 && nX < nSourceWidth && nY >= 0 && nY < nSourceHeight;
    };
    if (!inside(x, y) || !inside(std::int64_t(x) + w - 1, std::int64_t(y) + h - 1)) {
        return 0;
    }
    if (w < 1) {
        return 1;
    }
    for (int r = 0; r < h; ++r) {
        const T* pRow = pSource + std::size_t(y + r) * std::size_t(nSourceWidth) + x;
        std::copy(pRow, pRow + w, pTarget + std::size_t(r) * std::size_t(w));
    }
    return 1;
}

}  // namespace tessera
