// highestCount: the greatest count of SMV frames that other programs are to trust.
#pragma once

#include "frames/trustedrange.h"

#include <algorithm>
#include <cmath>

namespace tessera {

/// The greatest count of 16 bits but one; the greatest one marks saturated pixels.
constexpr int g_nHighestSmv = 65534;

/// The greatest count below the saturation in the headers and within the range of SMV pixels.
/// @param nElse  where the saturation is unknown
inline int highestCount(const TrustedRange& trusted, int nElse)
{
    return trusted.dfSaturation > 1
               ? int(std::min(std::ceil(trusted.dfSaturation) - 1, double(g_nHighestSmv)))
               : nElse;
}

}  // namespace tessera
