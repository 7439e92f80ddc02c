// CExpectedSpots: the predicted spots of each frame.
#pragma once

#include "integration/observation.h"
#include "integration/passagegeometry.h"
#include "integration/rockingcurve.h"
#include "integration/spotmeasure.h"
#include "integration/spotoffsets.h"

#include <vector>

namespace tessera {

/// Which observations are visible on a frame, where, and which fraction of each the frame records. The object
/// is immutable, so threads may share it.
class CExpectedSpots {
public:
    /// @param passages, listObservation  must outlive this object
    CExpectedSpots(const CPassageGeometry& passages, const std::vector<Observation>& listObservation,
                   const RockingCurve& curve, const CSpotOffsets& correction);

    /// The spots of a frame, in the order of the observations.
    std::vector<ExpectedSpot> onFrame(int nFrame) const;
    /// The number of spots on all frames together.
    long long spotCount() const;

private:
    const CPassageGeometry& m_passages;
    const std::vector<Observation>& m_listObservation;
    const RockingCurve m_curve;
    const CSpotOffsets m_correction;
    std::vector<std::vector<int>> m_listActive;  // per frame
};

}  // namespace tessera
