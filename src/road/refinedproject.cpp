#include "road/refinedproject.h"

#include "dataset/newproject.h"
#include "dataset/seriesreading.h"
#include "refinement/beamdrift.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The azimuth for project files, along which the pattern is longer: 0 to 180 degrees.
double azimuthInFile(double dfAzimuth)
{
    const double dfTurned = std::fmod(dfAzimuth + 90, 180);
    return dfTurned < 0 ? dfTurned + 180 : dfTurned;
}

/// A number as it is written to the file; digits beyond the fifth decimal are not significant.
double inFile(double dfValue)
{
    return QString::number(dfValue, 'f', 5).toDouble();
}

}  // namespace

std::optional<QByteArray> refinedProjectText(const DataSet& dataSet, const GeometryModel& model,
                                             const QString& strProjectFile, QString* pstrReason)
{
    const DiffractionGeometry& geometry = model.geometry;
    const PlaneTerms<double>& plane = geometry.plane;
    NewProject project;
    const SourceSeries source = sourceSeries(dataSet);
    project.listFrame = source.listFrame;
    project.dfWavelength = dataSet.m_dfWavelength;
    project.dfPixelSize = source.dfPixelSize;
    project.dfRotationAxis = plane.axis;
    project.rotation = dataSet.m_rotation;
    const Distortion stretching = distortionOf(plane.stretchingCos, plane.stretchingSin);
    if (stretching.dfAmplitude != 0) {
        project.dfStretchAmplitude = 100 * stretching.dfAmplitude;
        project.dfStretchAzimuth = azimuthInFile(stretching.dfAzimuth);
    }
    project.distortion = seriesDistortion(geometry);
    project.distortion.dfRadius *= dataSet.m_reading.choice.nBin;
    for (const DistortionKeyword& row : g_aDistortionKeyword) {
        project.distortion.*row.pMember = inFile(project.distortion.*row.pMember);
    }
    project.bTellDistortion = true;
    for (int n = 0; n < source.tilts.size(); ++n) {
        const double dfTilt = source.tilts.listOverall[n];
        const double dfMore = (geometry.turn.scale - 1) * (dfTilt - geometry.dfMiddleTilt) +
                              geometry.turn.offset;
        project.tilts.append(source.tilts.listStage.value(n) + dfMore, source.tilts.listBeam.value(n),
                             dfTilt + dfMore);
    }
    return makeProjectText(project, strProjectFile, pstrReason);
}

ShiftData refinedShifts(const DataSet& dataSet, const GeometryModel& model)
{
    ShiftData shifts = {dataSet.m_dfCenterX, dataSet.m_dfCenterY, dataSet.m_listShift};
    const std::vector<FramePlace> listOffset = beamOffsets(model, std::max(1, dataSet.m_listShift.size()));
    const FramePlace& first = listOffset.front();
    shifts.dfCenterX += first.dfX;
    shifts.dfCenterY += first.dfY;
    for (int n = 0; n < shifts.listShift.size(); ++n) {
        const FramePlace& offset = listOffset[n];
        shifts.listShift[n] += QPointF(offset.dfX - first.dfX, offset.dfY - first.dfY);
    }
    return shifts;
}

}  // namespace tessera
