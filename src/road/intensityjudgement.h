// Judgement of the intensities: what the stage that integrates is worth.
#pragma once

#include "road/roadresults.h"

namespace tessera {

/// Bad where equivalent reflections tell nothing of one another. Doubtful without intensities, where
/// equivalents agree poorly, much is missing, little is above the noise, or another Laue class is nearly as
/// likely. The results need those of the stage.
Judgement judgeIntensities(const RoadResults& results);
/// The same of intensities that are there, for those who walk no road.
Judgement judgeIntensities(const IntegrationResult& result);

}  // namespace tessera
