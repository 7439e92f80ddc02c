// ToldTilt: which angles of a header are possible for a goniometer.
#pragma once

#include "imagefiles/frameheader.h"

namespace tessera {

constexpr double g_dfMostTilt = 360;     ///< greatest tilt, degrees; goniometers count up to a whole turn
constexpr double g_dfMostTiltStep = 90;  ///< greatest step, degrees, more than any exposure turns

/// An angle of a header in degrees; NaN, with a doubt, where it is impossible.
/// @param dfMost   greatest possible magnitude
/// @param pszName  its name in the header
double tiltWithin(double df, double dfMost, const char* pszName, FrameHeader& header);

}  // namespace tessera
