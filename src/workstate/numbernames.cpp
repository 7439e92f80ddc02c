#include "dataset/parametertable.h"
#include "workstate/workdifferences.h"

#include <algorithm>

namespace tessera {

namespace {

struct NumberName {
    ParameterMember member;
    const char* pszName;
};

using Data = DataSet;
using Hunt = PeakHuntingParameters;
using Mapping = MappingParameters;
using Merge = PeakMergingParameters;
using Cell = CellHuntingParameters;
using Refine = RefinementParameters;
using Lens = SeriesDistortion;

const NumberName g_aName[] = {
    {&Data::m_dfWavelength, "Wavelength"},
    {&Data::m_dfPixelSize, "Pixel size"},
    {&Data::m_dfRotationAxis, "Rotation axis"},
    {&Data::m_dfTiltRelaxation, "Tilt relaxation"},
    {&Data::m_dfStretchAmplitude, "Stretching"},
    {&Data::m_dfStretchAzimuth, "Azimuth of the stretching"},
    {&Lens::dfEllipseAmplitude, "Ellipse"},
    {&Lens::dfEllipseAzimuth, "Azimuth of the ellipse"},
    {&Lens::dfThirdOrderRadial, "Third order, radial"},
    {&Lens::dfThirdOrderSpiral, "Third order, spiral"},
    {&Lens::dfParabolicAmplitude, "Second order"},
    {&Lens::dfParabolicAzimuth, "Azimuth of the second order"},
    {&Lens::dfRadius, "Radius of the distortion"},
    {&Lens::dfAxisOutOfPlane, "Axis out of plane"},
    {&Data::m_dfCenterX, "Direct beam, column"},
    {&Data::m_dfCenterY, "Direct beam, row"},
    {&Hunt::m_dfPeakRadius, "Peak radius"},
    {&Hunt::m_dfBackgroundRadius, "Background radius"},
    {&Hunt::m_dfPeakThreshold, "Threshold of peaks"},
    {&Hunt::m_dfSmoothRadius, "Smoothing radius"},
    {&Hunt::m_dfIntegrationRadius, "Integration radius"},
    {&Hunt::m_dfIntegrationBackground, "Background ring"},
    {&Mapping::m_dfResolutionMin, "Least d*"},
    {&Mapping::m_dfResolutionMax, "Greatest d*"},
    {&Mapping::m_dfIntensityMin, "Least intensity"},
    {&Mapping::m_dfIntensityMax, "Greatest intensity"},
    {&Merge::m_dfMin3DDistance, "Least 3D distance"},
    {&Merge::m_dfMax2DDistance, "Greatest 2D distance"},
    {&Merge::m_dfMin2DLength, "Least 2D length"},
    {&Merge::m_dfMax3DLength, "Greatest 3D length"},
    {&Cell::m_dfCellRangeMin, "Shortest edge"},
    {&Cell::m_dfCellRangeMax, "Longest edge"},
    {&IndexingParameters::m_dfIndexThreshold, "Threshold of indices"},
    {&IndexingParameters::m_nSpaceGroup, "Space group"},
    {&ExtractionParameters::m_nWindowRadius, "Radius of the extraction"},
    {&ExtractionParameters::m_nBackgroundSize, "Ring of the extraction"},
    {&ExtractionParameters::m_dfResolutionLimit, "Limit of predicted d*"},
    {&Refine::m_dfRefineIntensityLow, "Least intensity of pairs"},
    {&Refine::m_dfRefineIntensityHigh, "Greatest intensity of pairs"},
    {&Refine::m_dfRefineDStarLow, "Least d* of pairs"},
    {&Refine::m_dfRefineDStarHigh, "Greatest d* of pairs"},
};

}  // namespace

QString nameOfNumber(int nRow)
{
    const Parameter& row = parameterTable()[nRow];
    const auto* pName = std::find_if(std::begin(g_aName), std::end(g_aName),
                                     [&](const NumberName& name) { return name.member == row.member; });
    return pName == std::end(g_aName) ? QStringLiteral("Number") : QString::fromUtf8(pName->pszName);
}

}  // namespace tessera
