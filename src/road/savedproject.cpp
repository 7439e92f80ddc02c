#include "road/savedproject.h"

#include "dataset/peaklistfile.h"
#include "dataset/serieschoicefile.h"
#include "dataset/seriesreading.h"
#include "dataset/shiftfile.h"
#include "dataset/unitcellfile.h"
#include "records/fileset.h"
#include "records/resultfile.h"

#include <QDir>
#include <QFileInfo>

#include <cmath>

namespace tessera {

namespace {

/// The azimuth for project files, along which the pattern is longer: 0 up to 180 degrees.
double azimuthInFile(double dfAzimuth)
{
    const double dfTurned = std::fmod(dfAzimuth + 90, 180);
    return dfTurned < 0 ? dfTurned + 180 : dfTurned;
}

bool isSameFile(const QString& strOne, const QString& strOther)
{
    const QFileInfo one(strOne), other(strOther);
    return one.absoluteFilePath() == other.absoluteFilePath() ||
           (one.exists() && other.exists() && one.canonicalFilePath() == other.canonicalFilePath());
}

}  // namespace

NewProject projectOfSeries(const DataSet& dataSet, const MappingParameters& mapping)
{
    NewProject project;
    const SourceSeries source = sourceSeries(dataSet);
    project.listFrame = source.listFrame;
    project.dfWavelength = dataSet.m_dfWavelength;
    project.dfPixelSize = source.dfPixelSize;
    project.dfRotationAxis = dataSet.m_dfRotationAxis;
    if (mapping.m_bApplyStretching) {
        project.dfStretchAmplitude = dataSet.m_dfStretchAmplitude;
        project.dfStretchAzimuth = azimuthInFile(dataSet.m_dfStretchAzimuth);
    }
    project.distortion = source.distortion;
    project.bTellDistortion = true;
    const int nFrames = dataSet.m_listOverallTilt.size();
    for (int n = 0; n < source.tilts.size(); ++n) {
        // Project files have no line for the relaxation, so it becomes part of the tilts.
        const double dfMore = source.listFrameOf[n] * dataSet.m_dfTiltRelaxation / nFrames;
        project.tilts.append(source.tilts.listStage.value(n), source.tilts.listBeam.value(n),
                             source.tilts.listOverall[n] + dfMore);
    }
    return project;
}

bool saveSeriesAsProject(const DataSet& dataSet, const MappingParameters& mapping,
                         const QString& strProjectFile, QString* pstrReason, QStringList* plistFile)
{
    if (isSameFile(strProjectFile, fileOfProject(dataSet, QStringLiteral(".ed3d")))) {
        *pstrReason = QStringLiteral(
                          "%1 is the project that is open; it keeps what it was told. Choose "
                          "another name.")
                          .arg(strProjectFile);
        return false;
    }
    const std::optional<QByteArray> bytesProject = makeProjectText(projectOfSeries(dataSet, mapping),
                                                                   strProjectFile, pstrReason);
    if (!bytesProject) {
        return false;
    }
    DataSet names;  // names of the new project
    names.m_strProjectDir = QFileInfo(strProjectFile).absolutePath();
    names.m_strProjectName = QFileInfo(strProjectFile).completeBaseName();
    if (!keepSeriesChoice(fileOfProject(names, QString()), dataSet.m_reading.choice, pstrReason)) {
        return false;
    }
    CFileSet files;
    QStringList listFile;
    const auto add = [&](const QString& strFile, const QByteArray& bytes) {
        files.add(strFile, bytes);
        listFile.append(strFile);
    };
    add(strProjectFile, *bytesProject);
    if (!dataSet.m_listShift.isEmpty()) {
        add(fileOfProject(names, ResultFile::Shifts),
            shiftFileText({dataSet.m_dfCenterX, dataSet.m_dfCenterY, dataSet.m_listShift}));
    }
    if (const std::optional<ReciprocalBasis> basis = cellInForce(dataSet)) {
        add(fileOfProject(names, ResultFile::Cell), unitCellText(*basis));
    }
    if (!files.commit(pstrReason)) {
        return false;
    }
    if (!dataSet.m_listPeakFrame.isEmpty()) {
        const QString strPeaks = fileOfProject(names, ResultFile::Peaks);
        if (!writePeakList(dataSet, strPeaks, pstrReason)) {
            return false;
        }
        listFile.append(strPeaks);
    }
    if (plistFile) {
        *plistFile = listFile;
    }
    return true;
}

}  // namespace tessera
