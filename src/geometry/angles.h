// Angles: degrees and radians, and azimuths as the user sees them.
#pragma once

#include <cmath>

#include "records/pi.h"

namespace tessera {

// The product is formed before the quotient. Another order would change the last bits of mapped points.

/// Radians of an angle in degrees.
inline double radians(double dfDegrees)
{
    return dfDegrees * g_dfPi / 180;
}
/// Degrees of an angle in radians.
inline double degrees(double dfRadians)
{
    return dfRadians * 180 / g_dfPi;
}

/// Azimuth of a place in image coordinates (y runs down): degrees, −180 to 180, counter-clockwise on the
/// screen from 3 o'clock.
inline double screenAzimuth(double dfX, double dfY)
{
    return degrees(std::atan2(-dfY, dfX));
}

/// The same azimuth in the range from 0 to 360.
inline double screenAzimuth360(double dfX, double dfY)
{
    const double dfAzimuth = screenAzimuth(dfX, dfY);
    return dfAzimuth < 0 ? dfAzimuth + 360 : dfAzimuth;
}

}  // namespace tessera
