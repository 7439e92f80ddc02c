// SpotLearning: learns spot profile, rocking curve and detector noise in a first pass over the frames.
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

/// What the second pass, the integration, needs.
struct LearnedSeries {
    SpotModel model;
    NoiseModel noise;
    RockingCurve curve;
    CSpotOffsets correction;
    std::optional<CLearnedProfile> profile;  ///< none if there were too few strong spots
    std::vector<char> listBlank;             ///< 1 for blank frames
    double dfGlow = 0;                       ///< radius of the direct beam's glow, pixels
    double dfReach = 3;                      ///< widths of the rocking curve on either side that are summed
};

/// Reads all frames in order and learns from the strong spots and the background.
///
/// A spot is strong if it is eight standard deviations above its background on one frame, does not overlap
/// with others, and is complete and unmasked.
/// @param dfStartSigma  approximate sigma of the spots, pixels
RunResult<LearnedSeries> learnSpots(const DataSet& dataSet, const CPassageGeometry& passages,
                                    const IntegrationOptions& options, double dfStartSigma,
                                    const std::vector<char>& listMask, int nJobs, CRunReport& report);

}  // namespace tessera
