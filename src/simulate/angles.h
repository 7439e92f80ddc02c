// Angles: π, degrees and radians.
#pragma once

#include <gemmi/math.hpp>

namespace tessera {

constexpr double g_dfPi = gemmi::pi();

// Product before quotient: simulated files hold to the last byte.
inline double radians(double dfDegrees)
{
    return dfDegrees * g_dfPi / 180;
}
inline double degrees(double dfRadians)
{
    return dfRadians * 180 / g_dfPi;
}

}  // namespace tessera
