#include "road/pagenumbers.h"

namespace tessera {

namespace {

template <typename T, typename TTarget>
void giveIfChanged(const T& left, const T& now, TTarget& target)
{
    if (left != now) {
        target = now;
    }
}

}  // namespace

PageGeometry pageGeometryOf(const SeriesData& series, const MappingParameters& mapping)
{
    return {series.m_dfWavelength,       series.m_dfPixelSize,       series.m_dfRotationAxis,
            series.m_bRotationAxisKnown, series.m_dfTiltRelaxation,  series.m_dfStretchAmplitude,
            series.m_dfStretchAzimuth,   mapping.m_bApplyStretching, series.m_distortion};
}

void giveChangedGeometry(const PageGeometry& file, const PageGeometry& now, RoadOptions& options)
{
    giveIfChanged(file.dfWavelength, now.dfWavelength, options.dfWavelength);
    giveIfChanged(file.dfPixelSize, now.dfPixelSize, options.dfPixelSize);
    // An axis that was found by a road, and is not in the file, will be found again.
    if (file.dfRotationAxis != now.dfRotationAxis && (file.bAxisKnown || now.bAxisKnown)) {
        options.dfRotationAxis = now.dfRotationAxis;
    }
    giveIfChanged(file.dfTiltRelaxation, now.dfTiltRelaxation, options.dfTiltRelaxation);
    giveIfChanged(file.dfStretchAmplitude, now.dfStretchAmplitude, options.dfStretchAmplitude);
    giveIfChanged(file.dfStretchAzimuth, now.dfStretchAzimuth, options.dfStretchAzimuth);
    giveIfChanged(file.bApplyStretching, now.bApplyStretching, options.bApplyStretching);
    for (const DistortionKeyword& keyword : g_aDistortionKeyword) {
        if (file.distortion.*keyword.pMember != now.distortion.*keyword.pMember) {
            options.listDistortion.emplace_back(keyword.pMember, now.distortion.*keyword.pMember);
        }
    }
}

void giveChangedNumbers(const PageNumbers& left, const PageNumbers& now, RoadOptions& options)
{
    giveIfChanged(left.hunting.m_dfPeakRadius, now.hunting.m_dfPeakRadius, options.dfPeakRadius);
    giveIfChanged(left.hunting.m_dfBackgroundRadius, now.hunting.m_dfBackgroundRadius,
                  options.dfBackgroundRadius);
    giveIfChanged(left.hunting.m_dfPeakThreshold, now.hunting.m_dfPeakThreshold, options.dfPeakThreshold);
    giveIfChanged(left.hunting.m_dfIntegrationRadius, now.hunting.m_dfIntegrationRadius,
                  options.dfIntegrationRadius);
    giveIfChanged(left.hunting.m_dfIntegrationBackground, now.hunting.m_dfIntegrationBackground,
                  options.dfIntegrationBackground);
    giveIfChanged(left.hunting.m_dfSmoothRadius, now.hunting.m_dfSmoothRadius,
                  options.hunting.m_dfSmoothRadius);
    giveIfChanged(left.mapping.m_dfResolutionMin, now.mapping.m_dfResolutionMin, options.dfResolutionMin);
    giveIfChanged(left.mapping.m_dfResolutionMax, now.mapping.m_dfResolutionMax, options.dfResolutionMax);
    giveIfChanged(left.mapping.m_dfIntensityMin, now.mapping.m_dfIntensityMin, options.dfIntensityMin);
    giveIfChanged(left.mapping.m_dfIntensityMax, now.mapping.m_dfIntensityMax, options.dfIntensityMax);
    giveIfChanged(left.merging.m_dfMin3DDistance, now.merging.m_dfMin3DDistance, options.dfMin3DDistance);
    giveIfChanged(left.merging.m_dfMax2DDistance, now.merging.m_dfMax2DDistance, options.dfMax2DDistance);
    giveIfChanged(left.merging.m_dfMin2DLength, now.merging.m_dfMin2DLength, options.merging.m_dfMin2DLength);
    giveIfChanged(left.merging.m_dfMax3DLength, now.merging.m_dfMax3DLength, options.merging.m_dfMax3DLength);
    giveIfChanged(left.merging.m_bIntegrate2D, now.merging.m_bIntegrate2D, options.merging.m_bIntegrate2D);
    giveIfChanged(left.merging.m_bIntegrateThroughFrames, now.merging.m_bIntegrateThroughFrames,
                  options.merging.m_bIntegrateThroughFrames);
    giveIfChanged(left.cell.m_dfCellRangeMin, now.cell.m_dfCellRangeMin, options.dfCellRangeMin);
    giveIfChanged(left.cell.m_dfCellRangeMax, now.cell.m_dfCellRangeMax, options.dfCellRangeMax);
    giveIfChanged(left.cell.m_method, now.cell.m_method, options.cellMethod);
    giveIfChanged(left.indexing.m_dfIndexThreshold, now.indexing.m_dfIndexThreshold,
                  options.indexing.m_dfIndexThreshold);
    giveIfChanged(left.indexing.m_nSpaceGroup, now.indexing.m_nSpaceGroup, options.indexing.m_nSpaceGroup);
}

}  // namespace tessera
