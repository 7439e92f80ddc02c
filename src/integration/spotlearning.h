// SpotLearning: what the strong reflections and the backgrounds of a series tell, in one reading of it.
#pragma once

#include "integration/framecounts.h"
#include "integration/learnedprofile.h"
#include "integration/passagegeometry.h"
#include "integration/rockingfit.h"
#include "integration/seriesintegration.h"
#include "integration/spotoffsets.h"

#include <optional>
#include <vector>

namespace tessera {

/// All that the second reading needs.
struct LearnedSeries {
    SpotModel model;
    NoiseModel noise;
    RockingCurve curve;
    CSpotOffsets correction;
    std::optional<CLearnedProfile> profile;
    std::vector<char> listBlank;  ///< per frame
    double dfGlow = 0;            ///< pixels about the direct beam
    double dfReach = 3;           ///< widths of the rocking curve on either side that are summed
};

/// Reads all frames in order and learns.
///
/// Strong is what stands eight deviations above its background on one frame, alone, whole and unmasked.
/// @param dfStartSigma  pixels, of the spots as the frames were looked at before
/// @param learned       replaced when the run finished
RunOutcome learnSpots(const DataSet& dataSet, const CPassageGeometry& passages,
                      const IntegrationOptions& options, double dfStartSigma,
                      const std::vector<char>& listMask, int nJobs, CRunReport& report,
                      LearnedSeries& learned);

}  // namespace tessera
