#include "reciprocal/mapping.h"

namespace tessera {

BeamCentres beamCentres(const DataSet& dataSet)
{
    return {dataSet.m_listShift, dataSet.m_dfCenterX, dataSet.m_dfCenterY};
}

QList<QList<Peak3D>> peaksAroundBeam(const QList<QList<Peak3D>>& listPeakFrame, const BeamCentres& centres)
{
    QList<QList<Peak3D>> listAround = listPeakFrame;
    for (int nFrame = 0; nFrame < listAround.size(); ++nFrame) {
        const QPointF ptCentre = frameCentre(centres, nFrame);
        for (Peak3D& peak : listAround[nFrame]) {
            peak.dfX2D -= ptCentre.x();
            peak.dfY2D -= ptCentre.y();
        }
    }
    return listAround;
}

double relaxedTilt(const DataSet& dataSet, int nFrame, int nFrames)
{
    return dataSet.m_listOverallTilt[nFrame] + nFrame * dataSet.m_dfTiltRelaxation / nFrames;
}

CPlaceCorrection placeCorrection(const DataSet& dataSet, bool bApplyStretching)
{
    std::optional<Stretching> stretching;
    if (bApplyStretching) {
        stretching = {dataSet.m_dfStretchAmplitude, dataSet.m_dfStretchAzimuth};
    }
    return {stretching, dataSet.m_distortion};
}

QVector<QList<Peak3D>> withoutDistortionBeside(const QVector<QList<Peak3D>>& vecPeak, const DataSet& dataSet)
{
    const CPlaceCorrection correction = placeCorrection(dataSet, false);
    QVector<QList<Peak3D>> vecMoved = vecPeak;
    if (!correction.hasTermsBeside()) {
        return vecMoved;
    }
    const BeamCentres centres = beamCentres(dataSet);
    for (QList<Peak3D>& listPeak : vecMoved) {
        for (Peak3D& peak : listPeak) {
            const QPointF ptCentre = frameCentre(centres, peak.nFrame);
            const QPointF pt = correction.undone(QPointF(peak.dfX2D, peak.dfY2D) - ptCentre) + ptCentre;
            peak.dfX2D = pt.x();
            peak.dfY2D = pt.y();
        }
    }
    return vecMoved;
}

namespace {

void mapPeak(Peak3D& peak, const QPointF& ptCentre, const CMatrix3& matrixAxis, const CMatrix3& matrixTilt,
             const DataSet& dataSet, const CPlaceCorrection& correction)
{
    const QPointF ptCentred = correction.undone({peak.dfX2D - ptCentre.x(), peak.dfY2D - ptCentre.y()});
    peak.dfX2DCorrected = ptCentred.x();
    peak.dfY2DCorrected = ptCentred.y();
    const Vec3D vecFlat = {float(dataSet.m_dfPixelSize * ptCentred.x()),
                           float(dataSet.m_dfPixelSize * ptCentred.y()), 0.f};
    const Vec3D vecPoint = rotated(matrixTilt,
                                   ewaldPoint(rotated(matrixAxis, vecFlat), dataSet.m_dfWavelength));
    peak.setPoint(vecPoint);
    peak.dfDStar = double(length(vecPoint));
    peak.setHKL(0, 0, 0);  // former indices were of the former geometry
}

}  // namespace

void mapPeakTo3D(Peak3D& peak, const QPointF& ptCentre, const CMatrix3& matrixAxis,
                 const CMatrix3& matrixTilt, const DataSet& dataSet, bool bApplyStretching)
{
    mapPeak(peak, ptCentre, matrixAxis, matrixTilt, dataSet, placeCorrection(dataSet, bApplyStretching));
}

bool transformPeaksTo3D(DataSet& dataSet, const MappingParameters& parameters, CRunReport& report)
{
    const int nFrames = dataSet.m_listPeakFrame.size();
    if (nFrames != dataSet.m_listShift.size()) {
        report.fail(
            QStringLiteral("The number of frames for peaks does not match that of the shift "
                           "correction data. Stop."));
        return false;
    }
    if (nFrames > dataSet.m_listOverallTilt.size()) {
        report.fail(
            QStringLiteral("The number of frames for peaks does not match that of the tilt angles. Stop."));
        return false;
    }
    const BeamCentres centres = beamCentres(dataSet);
    const CMatrix3 matrixAxis = rotationZ(dataSet.m_dfRotationAxis);
    const CPlaceCorrection correction = placeCorrection(dataSet, parameters.m_bApplyStretching);
    QList<QList<Peak3D>> listMapped;
    listMapped.reserve(nFrames);
    for (int nFrame = 0; nFrame < nFrames; ++nFrame) {
        const CMatrix3 matrixTilt = rotationAboutAxis(relaxedTilt(dataSet, nFrame, nFrames),
                                                      dataSet.m_distortion.dfAxisOutOfPlane);
        const QPointF ptCentre = frameCentre(centres, nFrame);
        QList<Peak3D> listPeak;
        listPeak.reserve(dataSet.m_listPeakFrame[nFrame].size());
        for (Peak3D peak : dataSet.m_listPeakFrame[nFrame]) {
            mapPeak(peak, ptCentre, matrixAxis, matrixTilt, dataSet, correction);
            peak.dfFrameTilt = dataSet.m_listOverallTilt[nFrame];
            listPeak.append(peak);
        }
        listMapped.append(listPeak);
    }
    dataSet.m_listPeakFrame = listMapped;
    dataSet.m_peakMapping = currentPeakMapping(dataSet, parameters);
    return true;
}

PeakMapping currentPeakMapping(const DataSet& dataSet, const MappingParameters& parameters)
{
    PeakMapping mapping;
    mapping.listShift = dataSet.m_listShift;
    mapping.listOverallTilt = dataSet.m_listOverallTilt;
    mapping.dfCenterX = dataSet.m_dfCenterX;
    mapping.dfCenterY = dataSet.m_dfCenterY;
    mapping.dfWavelength = dataSet.m_dfWavelength;
    mapping.dfPixelSize = dataSet.m_dfPixelSize;
    mapping.dfRotationAxis = dataSet.m_dfRotationAxis;
    mapping.dfTiltRelaxation = dataSet.m_dfTiltRelaxation;
    if (parameters.m_bApplyStretching) {
        mapping.dfStretchAmplitude = dataSet.m_dfStretchAmplitude;
        mapping.dfStretchAzimuth = dataSet.m_dfStretchAzimuth;
    }
    mapping.distortion = dataSet.m_distortion;
    return mapping;
}

bool canMapPeaks(const DataSet& dataSet)
{
    const int nFrames = dataSet.m_listPeakFrame.size();
    return nFrames > 0 && nFrames == dataSet.m_listShift.size() &&
           nFrames <= dataSet.m_listOverallTilt.size();
}

bool needsMapping(const DataSet& dataSet, const MappingParameters& parameters)
{
    return canMapPeaks(dataSet) && dataSet.m_peakMapping != currentPeakMapping(dataSet, parameters);
}

bool liesWithinLimits(const Peak3D& peak, const MappingParameters& parameters)
{
    return peak.dfIPoint >= parameters.m_dfIntensityMin && peak.dfIPoint <= parameters.m_dfIntensityMax &&
           peak.dfDStar <= parameters.m_dfResolutionMax && peak.dfDStar >= parameters.m_dfResolutionMin;
}

PeaksShown filterPeaksShown(const QList<QList<Peak3D>>& listPeakFrame, const MappingParameters& parameters)
{
    PeaksShown shown;
    shown.m_listPeakFrameShown.reserve(listPeakFrame.size());
    for (const QList<Peak3D>& listPeak : listPeakFrame) {
        QList<Peak3D> listKept;
        for (const Peak3D& peak : listPeak) {
            if (liesWithinLimits(peak, parameters)) {
                listKept.append(peak);
            }
        }
        shown.m_listPeakFlat.append(listKept);
        shown.m_listPeakFrameShown.append(listKept);
    }
    return shown;
}

QList<Peak3D> showPeaksIn3D(DataSet& dataSet, const MappingParameters& parameters)
{
    PeaksShown shown = filterPeaksShown(dataSet.m_listPeakFrame, parameters);
    dataSet.m_listPeakFrameShown = shown.m_listPeakFrameShown;
    dataSet.m_made.limitsShown = parameters;
    return shown.m_listPeakFlat;
}

}  // namespace tessera
