#include "integration/expectedspots.h"

namespace tessera {

CExpectedSpots::CExpectedSpots(const CPassageGeometry& passages,
                               const std::vector<Observation>& listObservation, const RockingCurve& curve,
                               const CSpotOffsets& correction)
    : m_passages(passages),
      m_listObservation(listObservation),
      m_curve(curve),
      m_correction(correction),
      m_listActive(size_t(passages.frameCount()))
{
    for (size_t n = 0; n < listObservation.size(); ++n) {
        for (int nFrame = listObservation[n].nFirstFrame; nFrame <= listObservation[n].nLastFrame; ++nFrame) {
            m_listActive[nFrame].push_back(int(n));
        }
    }
}

long long CExpectedSpots::spotCount() const
{
    long long nSpots = 0;
    for (const std::vector<int>& list : m_listActive) {
        nSpots += static_cast<long long>(list.size());
    }
    return nSpots;
}

std::vector<ExpectedSpot> CExpectedSpots::onFrame(int nFrame) const
{
    std::vector<ExpectedSpot> list;
    for (const int n : m_listActive[nFrame]) {
        const Observation& observation = m_listObservation[n];
        const std::optional<FramePlace> place = m_passages.placeOn(observation.anIndex, nFrame);
        if (!place) {
            continue;
        }
        const DoubleVector point = m_passages.pointOf(observation.anIndex);
        ExpectedSpot spot;
        spot.nObservation = n;
        spot.place = m_correction.corrected(nFrame, *place);
        spot.dfExcitation[0] = m_passages.excitationAtStart(point, nFrame);
        spot.dfExcitation[1] = m_passages.excitationAt(point, nFrame);
        spot.dfExcitation[2] = m_passages.excitationAtEnd(point, nFrame);
        spot.dfPart = m_curve.part(spot.dfExcitation[0], spot.dfExcitation[1], spot.dfExcitation[2],
                                   observation.dfDStar);
        list.push_back(spot);
    }
    return list;
}

}  // namespace tessera
