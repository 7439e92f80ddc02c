// Angles: degrees and radians, and the azimuth of a place as the user sees it.
#pragma once

#include <cmath>

#include "records/pi.h"

namespace tessera {

// Product before quotient: results of the mapping hold to the last bit.
inline double radians(double dfDegrees)
{
    return dfDegrees * g_dfPi / 180;
}
inline double degrees(double dfRadians)
{
    return dfRadians * 180 / g_dfPi;
}

/// Azimuth in degrees, −180 to 180, counter-clockwise on the screen from 3 o'clock. Image y runs down.
inline double screenAzimuth(double dfX, double dfY)
{
    return degrees(std::atan2(-dfY, dfX));
}

/// The same from 0 to 360.
inline double screenAzimuth360(double dfX, double dfY)
{
    const double dfAzimuth = screenAzimuth(dfX, dfY);
    return dfAzimuth < 0 ? dfAzimuth + 360 : dfAzimuth;
}

}  // namespace tessera
