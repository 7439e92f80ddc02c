// highestCount: up to how many counts other programs are to trust the pixels of SMV frames.
#pragma once

#include "frames/trustedrange.h"

#include <algorithm>
#include <cmath>

namespace tessera {

/// Counts of 16 bits, of which the last is what was cut off.
constexpr int g_nHighestSmv = 65534;

/// The most below the saturation that the frames tell, and below what their pixels hold.
/// @param nElse  where they tell none
inline int highestCount(const TrustedRange& trusted, int nElse)
{
    return trusted.dfSaturation > 1
               ? int(std::min(std::ceil(trusted.dfSaturation) - 1, double(g_nHighestSmv)))
               : nElse;
}

}  // namespace tessera
