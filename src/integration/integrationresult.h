// IntegrationResult: the complete result of integrating a series.
#pragma once

#include "integration/completenessforecast.h"
#include "integration/laueclass.h"
#include "integration/mergingquality.h"
#include "integration/scaling.h"
#include "integration/seriesintegration.h"
#include "integration/spacegroupranking.h"

#include <optional>

namespace tessera {

/// Observations, symmetry and merged intensities of a series.
struct IntegrationResult {
    SeriesGeometry series;        ///< geometry with which the reflections were predicted
    IntegratedSeries integrated;  ///< observations with scales, flags and sigmas after scaling
    LaueProposal laue;
    LaueCandidate chosen;  ///< the Laue class used for scaling and merging
    ScalingResult scaling;
    MergingQuality unscaled;  ///< agreement before scaling
    MergingQuality scaled;    ///< agreement after scaling, before rejection
    MergingQuality quality;   ///< agreement after rejection
    SpaceGroupRanking spaceGroups;
    std::optional<SpaceGroupCandidate> spaceGroup;  ///< the first of the ranking, or the requested one
    CompletenessForecast forecast;
    CellParameters cell;        ///< cell in the conventional setting
    CellParameters cellErrors;  ///< standard errors; 0: not known
};

}  // namespace tessera
