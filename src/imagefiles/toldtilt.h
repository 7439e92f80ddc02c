// ToldTilt: which angles of a header can be those of a goniometer.
#pragma once

#include "imagefiles/frameheader.h"

namespace tessera {

constexpr double g_dfMostTilt = 360;     ///< degrees, to either side: goniometers count up to a whole turn
constexpr double g_dfMostTiltStep = 90;  ///< degrees in one frame, more than any exposure turns

/// A number of degrees as a header tells it, or NaN with a doubt where it lies beyond what can be.
/// @param dfMost   the greatest magnitude
/// @param pszName  what the header calls it
double tiltWithin(double df, double dfMost, const char* pszName, FrameHeader& header);

}  // namespace tessera
