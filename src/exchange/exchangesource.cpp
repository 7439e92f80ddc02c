#include "exchange/exchangesource.h"

#include "integration/geometryforintegration.h"
#include "reciprocal/cellcommit.h"
#include "reciprocal/mapping.h"

namespace tessera {

namespace {

/// A copy of the data set without its peaks, with an arbitrary basis if there is no cell, from which the
/// geometry can be made.
DataSet withSomeBasis(const DataSet& dataSet)
{
    DataSet data;
    data.m_strProjectDir = dataSet.m_strProjectDir;
    data.m_listFrameFile = dataSet.m_listFrameFile;
    data.m_listHotPixel = dataSet.m_listHotPixel;
    data.m_reading = dataSet.m_reading;
    data.m_listStageTilt = dataSet.m_listStageTilt;
    data.m_listOverallTilt = dataSet.m_listOverallTilt;
    data.m_listBeamTiltBreak = dataSet.m_listBeamTiltBreak;
    data.m_dfWavelength = dataSet.m_dfWavelength;
    data.m_dfPixelSize = dataSet.m_dfPixelSize;
    data.m_dfRotationAxis = dataSet.m_dfRotationAxis;
    data.m_dfTiltRelaxation = dataSet.m_dfTiltRelaxation;
    data.m_dfStretchAmplitude = dataSet.m_dfStretchAmplitude;
    data.m_dfStretchAzimuth = dataSet.m_dfStretchAzimuth;
    data.m_distortion = dataSet.m_distortion;
    data.m_listShift = dataSet.m_listShift;
    data.m_dfCenterX = dataSet.m_dfCenterX;
    data.m_dfCenterY = dataSet.m_dfCenterY;
    data.m_listCell = {{0.1f, 0, 0}, {0, 0.1f, 0}, {0, 0, 0.1f}};
    return data;
}

}  // namespace

std::optional<ExchangeSource> exchangeSource(const DataSet& dataSet, const MappingParameters& mapping,
                                             const GeometryRefinement* refined,
                                             const IntegrationResult* integration)
{
    ExchangeSource source;
    source.pData = &dataSet;
    source.strFolder = dataSet.m_strProjectDir;
    source.pIntegration = integration;
    source.bCell = integration || cellInForce(dataSet).has_value();
    if (integration) {
        source.series = integration->series;
    } else {
        const std::optional<SeriesGeometry> series = source.bCell ? seriesGeometry(dataSet, mapping, refined)
                                                                  : seriesGeometry(withSomeBasis(dataSet),
                                                                                   mapping, nullptr);
        if (!series) {
            return std::nullopt;
        }
        source.series = *series;
        source.series.rotation = dataSet.m_rotation;
    }
    const BeamCentres centres = beamCentres(dataSet);
    for (int n = 0; n < source.series.frameCount(); ++n) {
        const QPointF ptBeam = frameCentre(centres, n);
        source.listBeam.push_back({ptBeam.x(), ptBeam.y()});
    }
    return source;
}

}  // namespace tessera
