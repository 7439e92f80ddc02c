#include "dataset/pagerounding.h"

#include <QString>

#include <cmath>

namespace tessera {

double spinBoxValue(double dfValue, int nDecimals, double dfMinimum, double dfMaximum)
{
    const double dfRounded = std::isnan(dfValue) ? 0 : QString::number(dfValue, 'f', nDecimals).toDouble();
    return qBound(dfMinimum, dfRounded, dfMaximum);
}

double wrappedAxis(double dfDegrees)
{
    return std::abs(dfDegrees) <= 180 ? dfDegrees : std::remainder(dfDegrees, 360.0);
}

double wrappedAzimuth(double dfDegrees)
{
    if (dfDegrees == 180)  // the box holds it, so that a file's 90 is shown as 90 more
        return dfDegrees;
    const double df = std::fmod(dfDegrees, 180.0);
    const double dfPositive = df < 0 ? df + 180 : df;
    return dfPositive < 180 ? dfPositive + 0.0 : 0;  // a tiny negative angle rounds up to 180; -0 becomes 0
}

static void hold(double& dfValue, int nDecimals, double dfMinimum, double dfMaximum)
{
    dfValue = spinBoxValue(dfValue, nDecimals, dfMinimum, dfMaximum);
}

void roundToPages(DataSet& data)
{
    hold(data.m_dfCenterX, 2, 0, g_dfMaxCenter);
    hold(data.m_dfCenterY, 2, 0, g_dfMaxCenter);
    hold(data.m_dfRotationAxis, 1, -180, 180);
    hold(data.m_dfTiltRelaxation, 1, -180, 180);
    hold(data.m_dfPixelSize, 6, 0, 10000);
    hold(data.m_dfWavelength, 6, 0, 10000);
    hold(data.m_dfStretchAmplitude, 2, -1000, 1000);
    hold(data.m_dfStretchAzimuth, 2, 0, 180);
}

void roundToPages(PeakHuntingParameters& parameters)
{
    hold(parameters.m_dfPeakRadius, 2, 0, 1000);
    hold(parameters.m_dfBackgroundRadius, 2, 0, 1000);
    hold(parameters.m_dfSmoothRadius, 2, 0, 1000);
    hold(parameters.m_dfPeakThreshold, 2, -100000, 1000000);
    hold(parameters.m_dfIntegrationRadius, 1, 0, 1000);
    hold(parameters.m_dfIntegrationBackground, 1, 0, 1000);
}

void roundToPages(MappingParameters& parameters)
{
    hold(parameters.m_dfResolutionMin, 2, 0, 100);
    hold(parameters.m_dfResolutionMax, 2, 0, 100);
    hold(parameters.m_dfIntensityMin, 2, -100000, 1000000);
    hold(parameters.m_dfIntensityMax, 2, -100000, 1000000);
}

void roundToPages(PeakMergingParameters& parameters)
{
    hold(parameters.m_dfMin3DDistance, 2, 0, 1000);
    hold(parameters.m_dfMax2DDistance, 2, 0, 1000);
    hold(parameters.m_dfMin2DLength, 2, -1, 1000);
    hold(parameters.m_dfMax3DLength, 2, 0, 1000);
}

void roundToPages(CellHuntingParameters& parameters)
{
    hold(parameters.m_dfCellRangeMin, 1, 1, 1000);
    hold(parameters.m_dfCellRangeMax, 1, 1, 1000);
}

void roundToPages(ExtractionParameters& parameters)
{
    parameters.m_nWindowRadius = qBound(0, parameters.m_nWindowRadius, 10000);
    parameters.m_nBackgroundSize = qBound(0, parameters.m_nBackgroundSize, 10000);
    hold(parameters.m_dfResolutionLimit, 1, 0, 100);
}

void roundToPages(IndexingParameters& parameters)
{
    hold(parameters.m_dfIndexThreshold, 2, 0.01, 0.5);
    parameters.m_nSpaceGroup = qBound(1, parameters.m_nSpaceGroup, 230);
}

void roundToPages(RefinementParameters& parameters)
{
    hold(parameters.m_dfRefineIntensityLow, 1, -1e7, 1e7);
    hold(parameters.m_dfRefineIntensityHigh, 1, -1e7, 1e7);
    hold(parameters.m_dfRefineDStarLow, 3, 0, 1000);
    hold(parameters.m_dfRefineDStarHigh, 3, 0, 1000);
}

}  // namespace tessera
