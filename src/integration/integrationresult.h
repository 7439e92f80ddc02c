// IntegrationResult: all that the integration of a series gives.
#pragma once

#include "integration/completenessforecast.h"
#include "integration/laueclass.h"
#include "integration/mergingquality.h"
#include "integration/scaling.h"
#include "integration/seriesintegration.h"
#include "integration/spacegroupranking.h"

#include <optional>

namespace tessera {

struct IntegrationResult {
    SeriesGeometry series;        ///< that it was predicted with
    IntegratedSeries integrated;  ///< with scales, flags and sigmas as the scaling left them
    LaueProposal laue;
    LaueCandidate chosen;  ///< the Laue class that scaling and merging use
    ScalingResult scaling;
    MergingQuality unscaled;  ///< the agreement before scaling
    MergingQuality scaled;    ///< after scaling, before rejection
    MergingQuality quality;   ///< after rejection
    SpaceGroupRanking spaceGroups;
    std::optional<SpaceGroupCandidate> spaceGroup;  ///< the first of the ranking, or that which was asked for
    CompletenessForecast forecast;
    CellParameters cell;        ///< of the conventional setting
    CellParameters cellErrors;  ///< standard errors; 0: not known
};

}  // namespace tessera
