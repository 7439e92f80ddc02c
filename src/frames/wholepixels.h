// wholePixels: a length on a frame in whole pixels.
#pragma once

#include <algorithm>
#include <cmath>

namespace tessera {

/// Truncated towards 0. What comes from a file may be anything: beyond 1e9 it is cut off there, outside every
/// frame, and what is no number becomes 0.
inline int wholePixels(double df)
{
    return std::isnan(df) ? 0 : int(std::clamp(df, -1e9, 1e9));
}

}  // namespace tessera
