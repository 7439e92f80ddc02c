#include "road/geometrystate.h"

namespace tessera {

namespace {

void copyGeometry(const DataSet& from, DataSet& to)
{
    to.m_listStageTilt = from.m_listStageTilt;
    to.m_listBeamTilt = from.m_listBeamTilt;
    to.m_listOverallTilt = from.m_listOverallTilt;
    to.m_dfPixelSize = from.m_dfPixelSize;
    to.m_dfRotationAxis = from.m_dfRotationAxis;
    to.m_nAxisDecimals = from.m_nAxisDecimals;
    to.m_bRotationAxisKnown = from.m_bRotationAxisKnown;
    to.m_dfTiltRelaxation = from.m_dfTiltRelaxation;
    to.m_dfStretchAmplitude = from.m_dfStretchAmplitude;
    to.m_dfStretchAzimuth = from.m_dfStretchAzimuth;
    to.m_distortion = from.m_distortion;
    to.m_listShift = from.m_listShift;
    to.m_dfCenterX = from.m_dfCenterX;
    to.m_dfCenterY = from.m_dfCenterY;
    to.m_listCellFound = from.m_listCellFound;
    to.m_listCell = from.m_listCell;
}

void copyResults(const DataSet& from, DataSet& to)
{
    to.m_listPeakFrame = from.m_listPeakFrame;
    to.m_peakMapping = from.m_peakMapping;
    to.m_vecPeakGroup = from.m_vecPeakGroup;
    to.m_listPeakFrameShown = from.m_listPeakFrameShown;
    to.m_listPeakMergedShown = from.m_listPeakMergedShown;
    to.m_listPeakMerged = from.m_listPeakMerged;
    to.m_listPeakChain = from.m_listPeakChain;
    to.m_vecPeakIndexedOnFrame = from.m_vecPeakIndexedOnFrame;
    to.m_vecReflectionFrame = from.m_vecReflectionFrame;
    to.m_listReflectionIndexed = from.m_listReflectionIndexed;
    to.m_listCellIndexed = from.m_listCellIndexed;
    to.m_nIntensityMode = from.m_nIntensityMode;
    to.m_made = from.m_made;
}

}  // namespace

CGeometryState::CGeometryState(const DataSet& dataSet, const MappingParameters& mapping)
    : m_bApplyStretching(mapping.m_bApplyStretching)
{
    m_data.m_listFrameFile = dataSet.m_listFrameFile;
    m_data.m_reading = dataSet.m_reading;
    copyGeometry(dataSet, m_data);
    copyResults(dataSet, m_data);
}

bool CGeometryState::isOf(const DataSet& dataSet) const
{
    if (dataSet.m_listFrameFile != m_data.m_listFrameFile ||
        dataSet.m_reading.choice != m_data.m_reading.choice ||
        dataSet.m_listPeakFrame.size() != m_data.m_listPeakFrame.size()) {
        return false;
    }
    for (int nFrame = 0; nFrame < m_data.m_listPeakFrame.size(); ++nFrame) {
        const QList<Peak3D>& listNow = dataSet.m_listPeakFrame[nFrame];
        const QList<Peak3D>& listThen = m_data.m_listPeakFrame[nFrame];
        if (listNow.size() != listThen.size()) {
            return false;
        }
        for (int n = 0; n < listNow.size(); ++n) {
            if (listNow[n].dfX2D != listThen[n].dfX2D || listNow[n].dfY2D != listThen[n].dfY2D) {
                return false;
            }
        }
    }
    return true;
}

bool CGeometryState::isInForce(const DataSet& dataSet, const MappingParameters& mapping) const
{
    const DataSet& kept = m_data;
    return mapping.m_bApplyStretching == m_bApplyStretching &&
           dataSet.m_listStageTilt == kept.m_listStageTilt && dataSet.m_listBeamTilt == kept.m_listBeamTilt &&
           dataSet.m_listOverallTilt == kept.m_listOverallTilt &&
           dataSet.m_dfPixelSize == kept.m_dfPixelSize && dataSet.m_dfRotationAxis == kept.m_dfRotationAxis &&
           dataSet.m_dfTiltRelaxation == kept.m_dfTiltRelaxation &&
           dataSet.m_dfStretchAmplitude == kept.m_dfStretchAmplitude &&
           dataSet.m_dfStretchAzimuth == kept.m_dfStretchAzimuth &&
           dataSet.m_distortion == kept.m_distortion && dataSet.m_listShift == kept.m_listShift &&
           dataSet.m_dfCenterX == kept.m_dfCenterX && dataSet.m_dfCenterY == kept.m_dfCenterY &&
           dataSet.m_listCellFound == kept.m_listCellFound && dataSet.m_listCell == kept.m_listCell;
}

bool CGeometryState::putBack(DataSet& dataSet, MappingParameters& mapping) const
{
    const bool bResults = isOf(dataSet);
    copyGeometry(m_data, dataSet);
    mapping.m_bApplyStretching = m_bApplyStretching;
    if (bResults) {
        copyResults(m_data, dataSet);
    }
    return bResults;
}

}  // namespace tessera
