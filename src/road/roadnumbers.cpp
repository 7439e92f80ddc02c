#include "road/roadnumbers.h"

#include <utility>

namespace tessera {

std::optional<double>* givenNumber(RoadOptions& o, const ParameterMember& member)
{
    const std::pair<ParameterMember, std::optional<double>*> aTarget[] = {
        {&DataSet::m_dfWavelength, &o.dfWavelength},
        {&DataSet::m_dfPixelSize, &o.dfPixelSize},
        {&DataSet::m_dfRotationAxis, &o.dfRotationAxis},
        {&DataSet::m_dfTiltRelaxation, &o.dfTiltRelaxation},
        {&DataSet::m_dfStretchAmplitude, &o.dfStretchAmplitude},
        {&DataSet::m_dfStretchAzimuth, &o.dfStretchAzimuth},
        {&DataSet::m_dfCenterX, &o.dfCenterX},
        {&DataSet::m_dfCenterY, &o.dfCenterY},
        {&PeakHuntingParameters::m_dfPeakRadius, &o.dfPeakRadius},
        {&PeakHuntingParameters::m_dfBackgroundRadius, &o.dfBackgroundRadius},
        {&PeakHuntingParameters::m_dfIntegrationRadius, &o.dfIntegrationRadius},
        {&PeakHuntingParameters::m_dfIntegrationBackground, &o.dfIntegrationBackground},
        {&PeakHuntingParameters::m_dfPeakThreshold, &o.dfPeakThreshold},
        {&PeakMergingParameters::m_dfMin3DDistance, &o.dfMin3DDistance},
        {&PeakMergingParameters::m_dfMax2DDistance, &o.dfMax2DDistance},
        {&MappingParameters::m_dfResolutionMin, &o.dfResolutionMin},
        {&MappingParameters::m_dfResolutionMax, &o.dfResolutionMax},
        {&MappingParameters::m_dfIntensityMin, &o.dfIntensityMin},
        {&MappingParameters::m_dfIntensityMax, &o.dfIntensityMax},
        {&CellHuntingParameters::m_dfCellRangeMin, &o.dfCellRangeMin},
        {&CellHuntingParameters::m_dfCellRangeMax, &o.dfCellRangeMax},
        {&RefinementParameters::m_dfRefineIntensityLow, &o.dfRefineIntensityLow},
        {&RefinementParameters::m_dfRefineIntensityHigh, &o.dfRefineIntensityHigh},
        {&RefinementParameters::m_dfRefineDStarLow, &o.dfRefineDStarLow},
        {&RefinementParameters::m_dfRefineDStarHigh, &o.dfRefineDStarHigh}};
    for (const auto& target : aTarget) {
        if (target.first == member) {
            return target.second;
        }
    }
    return nullptr;
}

}  // namespace tessera
