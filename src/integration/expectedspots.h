// CExpectedSpots: the predicted spots frame by frame.
#pragma once

#include "integration/observation.h"
#include "integration/passagegeometry.h"
#include "integration/rockingcurve.h"
#include "integration/spotmeasure.h"
#include "integration/spotoffsets.h"

#include <vector>

namespace tessera {

/// Which observations show on a frame, where, and with which part. Only read once it is made: threads may
/// share one.
class CExpectedSpots {
public:
    /// @param listObservation  outlives this
    CExpectedSpots(const CPassageGeometry& passages, const std::vector<Observation>& listObservation,
                   const RockingCurve& curve, const CSpotOffsets& correction);

    /// Those of a frame, in the order of the observations.
    std::vector<ExpectedSpot> onFrame(int nFrame) const;
    /// Of all frames together.
    long long spotCount() const;

private:
    const CPassageGeometry& m_passages;
    const std::vector<Observation>& m_listObservation;
    const RockingCurve m_curve;
    const CSpotOffsets m_correction;
    std::vector<std::vector<int>> m_listActive;  // per frame
};

}  // namespace tessera
