// wholePixels: converts a length on a frame to whole pixels.
#pragma once

#include <algorithm>
#include <cmath>

namespace tessera {

/// Truncates towards 0. As numbers from files may be anything, they are limited to ±1e9, which is outside
/// every frame, and NaN becomes 0.
inline int wholePixels(double df)
{
    return std::isnan(df) ? 0 : int(std::clamp(df, -1e9, 1e9));
}

}  // namespace tessera
