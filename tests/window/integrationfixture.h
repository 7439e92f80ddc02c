// A result of an integration made by hand: the kinematical intensities of quartz on a series of frames.
#pragma once

#include "integration/integrationresult.h"

namespace tessera {

/// Each reflection of quartz to 0.7 Å⁻¹ passes once: the n-th through frame n modulo the number of frames, at
/// a place of its own. Intensity 100 times |F|², sigma 2, no flag, three frames each. Three shells; frame
/// scales of 1 + frame/100.
IntegrationResult quartzResult(int nFrames);

/// The profile of an observation on the frames from one before it to one after it: a spot of 9 × 9 pixels in
/// a disc of radius 3, 10, 100, 1000, ... counts in its middle.
ObservationProfile steepProfile(const Observation& observation);

}  // namespace tessera
