#include "road/refinedproject.h"

#include "dataset/newproject.h"

#include <cmath>

namespace tessera {

namespace {

/// The azimuth as project files have it, that along which the pattern is longer: 0 to 180 degrees.
double azimuthInFile(double dfAzimuth)
{
    const double dfTurned = std::fmod(dfAzimuth + 90, 180);
    return dfTurned < 0 ? dfTurned + 180 : dfTurned;
}

QByteArray lineOf(const char* pszKeyword, double dfValue)
{
    return QByteArray(pszKeyword) + ' ' + QByteArray::number(dfValue, 'f', 5) + '\n';
}

/// The numbers that have no place among the usual keywords.
QByteArray linesBeside(const GeometryModel& model)
{
    const DiffractionGeometry& geometry = model.geometry;
    const PlaneTerms<double>& plane = geometry.plane;
    QByteArray bytes;
    if (model.bEllipse) {
        const Distortion ellipse = distortionOf(plane.ellipseCos, plane.ellipseSin);
        bytes += "# In place of the stretching above, where it is known:\n";
        bytes += lineOf("ELLIPSEAMP", 100 * ellipse.dfAmplitude);
        bytes += lineOf("ELLIPSEAZIMUTH", azimuthInFile(ellipse.dfAzimuth));
    }
    if (plane.radial != 0 || plane.spiral != 0) {
        bytes += lineOf("THIRDORDERRADIAL", 100 * plane.radial);
        bytes += lineOf("THIRDORDERSPIRAL", 100 * plane.spiral);
        bytes += lineOf("THIRDORDERRADIUS", geometry.dfRadius);
    }
    if (geometry.turn.outOfPlane != 0) {
        bytes += lineOf("AXISOUTOFPLANE", geometry.turn.outOfPlane);
    }
    return bytes;
}

}  // namespace

bool makeRefinedProjectText(const DataSet& dataSet, const MappingParameters& mapping,
                            const GeometryModel& model, const QString& strProjectFile, QByteArray& bytesText,
                            QString* pstrReason)
{
    const DiffractionGeometry& geometry = model.geometry;
    const PlaneTerms<double>& plane = geometry.plane;
    NewProject project;
    project.listFrame = dataSet.m_listFrameFile;
    project.dfWavelength = dataSet.m_dfWavelength;
    project.dfPixelSize = dataSet.m_dfPixelSize;
    project.dfRotationAxis = plane.axis;
    if (!model.bEllipse) {
        const Distortion stretching = distortionOf(plane.stretchingCos, plane.stretchingSin);
        project.dfStretchAmplitude = 100 * stretching.dfAmplitude;
        project.dfStretchAzimuth = azimuthInFile(stretching.dfAzimuth);
    } else if (mapping.m_bApplyStretching) {
        project.dfStretchAmplitude = dataSet.m_dfStretchAmplitude;
        project.dfStretchAzimuth = azimuthInFile(dataSet.m_dfStretchAzimuth);
    }
    for (int n = 0; n < dataSet.m_listOverallTilt.size(); ++n) {
        const double dfTilt = dataSet.m_listOverallTilt[n];
        const double dfMore = (geometry.turn.scale - 1) * (dfTilt - geometry.dfMiddleTilt) +
                              geometry.turn.offset;
        project.tilts.append(dataSet.m_listStageTilt.value(n) + dfMore, dataSet.m_listBeamTilt.value(n),
                             dfTilt + dfMore);
    }
    QByteArray bytes;
    if (!makeProjectText(project, strProjectFile, bytes, pstrReason)) {
        return false;
    }
    bytesText = bytes.insert(bytes.indexOf("FILELIST\n"), linesBeside(model));
    return true;
}

}  // namespace tessera
