#include "refinement/geometryofseries.h"

#include "reciprocal/cellcommit.h"
#include "reciprocal/indexedpeaks.h"
#include "reciprocal/mapping.h"

#include <algorithm>
#include <cmath>

namespace tessera {

std::vector<GeometrySpot> geometrySpots(const DataSet& dataSet)
{
    std::vector<GeometrySpot> listSpot;
    const BeamCentres centres = beamCentres(dataSet);
    const int nFrames = std::min(frameCount(dataSet), int(dataSet.m_listOverallTilt.size()));
    for (int nFrame = 0; nFrame < std::min(nFrames, int(dataSet.m_vecPeakIndexedOnFrame.size())); ++nFrame) {
        if (!centres.holds(nFrame)) {
            continue;
        }
        const QPointF ptCentre = frameCentre(centres, nFrame);
        for (const Peak3D& peak : dataSet.m_vecPeakIndexedOnFrame[nFrame]) {
            GeometrySpot spot;
            spot.nFrame = nFrame;
            spot.dfTilt = relaxedTilt(dataSet, nFrame, nFrames);
            spot.place = {peak.dfX2D - ptCentre.x(), peak.dfY2D - ptCentre.y()};
            spot.anIndex = {int(std::lround(peak.dfH)), int(std::lround(peak.dfK)),
                            int(std::lround(peak.dfL))};
            spot.dfWeight = peak.dfIPoint;
            listSpot.push_back(spot);
        }
    }
    return listSpot;
}

std::optional<DiffractionGeometry> geometryOfSeries(const DataSet& dataSet, const MappingParameters& mapping)
{
    const std::optional<ReciprocalBasis> basis = cellInForce(dataSet);
    if (!basis) {
        return std::nullopt;
    }
    DiffractionGeometry geometry;
    geometry.aBasis = {widened(basis->a), widened(basis->b), widened(basis->c)};
    geometry.dfWavelength = dataSet.m_dfWavelength;
    geometry.dfPixelSize = dataSet.m_dfPixelSize;
    geometry.plane = planeTerms(dataSet.m_distortion);
    geometry.dfRadius = dataSet.m_distortion.dfRadius;
    geometry.turn.outOfPlane = dataSet.m_distortion.dfAxisOutOfPlane;
    geometry.plane.axis = dataSet.m_dfRotationAxis;
    if (mapping.m_bApplyStretching) {
        const double dfAmplitude = dataSet.m_dfStretchAmplitude / 100;
        geometry.plane.stretchingCos = dfAmplitude * std::cos(2 * radians(dataSet.m_dfStretchAzimuth));
        geometry.plane.stretchingSin = dfAmplitude * std::sin(2 * radians(dataSet.m_dfStretchAzimuth));
    }
    if (!dataSet.m_listOverallTilt.isEmpty()) {
        geometry.dfMiddleTilt = (dataSet.m_listOverallTilt.first() + dataSet.m_listOverallTilt.last()) / 2;
    }
    return geometry;
}

}  // namespace tessera
