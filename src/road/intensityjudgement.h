// Judgement of the intensities: rates the result of the stage integrate.
#pragma once

#include "road/roadresults.h"

namespace tessera {

/// Bad if equivalent reflections do not agree at all. Doubtful if there are no intensities, if equivalents
/// agree poorly, if the data are incomplete or weak, or if another Laue class is nearly as likely.
/// @param results  must contain the result of the stage
Judgement judgeIntensities(const RoadResults& results);
/// The same for intensities that were not computed by a road.
Judgement judgeIntensities(const IntegrationResult& result);

}  // namespace tessera
