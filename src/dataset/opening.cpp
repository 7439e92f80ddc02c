#include "dataset/opening.h"

#include "dataset/hotpixelfile.h"
#include "dataset/pagerounding.h"
#include "dataset/peaklistfile.h"
#include "dataset/projectfile.h"
#include "dataset/serieschoicefile.h"
#include "dataset/seriesreading.h"
#include "dataset/shiftfile.h"
#include "dataset/unitcellfile.h"
#include "imagefiles/frameformats.h"
#include "imagefiles/framename.h"
#include "records/beamtiltbreak.h"

#include <QFileInfo>
#include <QHash>
#include <QImageReader>

namespace tessera {

OpenKind openKind(const QStringList& listFile)
{
    if (listFile.isEmpty()) {
        return OpenKind::nothing;
    }
    const QString strSuffix = QFileInfo(listFile.first()).suffix().toLower();
    if (strSuffix == QLatin1String("txt")) {
        return OpenKind::reflectionList;
    }
    return strSuffix == QLatin1String("ed3d") ? OpenKind::project : OpenKind::images;
}

QString reasonNotToOpen(const QString& strFile)
{
    const bool bImage = openKind({strFile}) == OpenKind::images;
    const QFileInfo info(bImage ? frameName(strFile).strFile : strFile);
    if (bImage && !info.exists()) {
        return QStringLiteral("%1 does not exist.").arg(strFile);
    }
    // Reading a pipe would wait for its writer, so only regular files are read.
    bool bUsable = info.isFile() || !info.exists();
    if (bUsable && bImage && frameFormatOf(strFile).listSuffix.isEmpty()) {
        bUsable = QImageReader(info.filePath()).canRead();
    }
    return bUsable ? QString() : QStringLiteral("%1 is neither a project nor an image.").arg(strFile);
}

QString reasonNotToOpen(const QStringList& listFile)
{
    if (listFile.isEmpty()) {
        return {};
    }
    QString strReason = reasonNotToOpen(listFile.first());
    if (openKind(listFile) != OpenKind::images) {
        return strReason;
    }
    for (const QString& strFile : listFile) {
        if (strReason.isEmpty() && QFileInfo::exists(frameName(strFile).strFile)) {
            // A project or a text list among frames would be opened as a frame.
            strReason = openKind({strFile}) == OpenKind::images
                            ? reasonNotToOpen(strFile)
                            : QStringLiteral("%1 is not an image, as the others are.").arg(strFile);
        }
    }
    return strReason;
}

QStringList missingFrames(const QStringList& listFrame)
{
    QStringList listMissing;
    QHash<QString, int> mapImages;  // number of images of each file; 0 if it is known only after reading
    for (const QString& strFrame : listFrame) {
        const FrameName name = frameName(strFrame);
        if (!QFileInfo(name.strFile).isReadable()) {
            listMissing.append(strFrame);
        } else if (name.bPart) {
            if (!mapImages.contains(name.strFile)) {
                const FrameHeader header = frameHeader(name.strFile);
                mapImages[name.strFile] = header.size.isValid() ? header.nImages : 0;
            }
            const int nImages = mapImages[name.strFile];
            if (nImages > 0 && name.nImage >= nImages) {
                listMissing.append(
                    QStringLiteral("%1 (the file holds %L2 images)").arg(strFrame).arg(nImages));
            }
        }
    }
    return listMissing;
}

namespace {

// Whether a file has so many images that they are a series. Files of two images are rather an image with an
// auxiliary one.
bool isSeriesOfImages(const QString& strFile, int& nImages)
{
    const int nLeast = 3;
    if (frameName(strFile).bPart || frameFormatOf(strFile).strName == QLatin1String("MRC")) {
        return false;
    }
    nImages = frameHeader(strFile).nImages;
    return nImages >= nLeast;
}

}  // namespace

QStringList framesOfImageFiles(const QStringList& listFile, CRunReport* pReport)
{
    QStringList listFrame, listLine;
    for (const QString& strFile : listFile) {
        int nImages = 0;
        if (!isSeriesOfImages(strFile, nImages)) {
            return listFile;
        }
        listFrame += framesOfFile(strFile, nImages);
        listLine.append(
            QStringLiteral("%1 holds %L2 images: each is a frame of the series.").arg(strFile).arg(nImages));
    }
    for (const QString& strLine : qAsConst(listLine)) {
        if (pReport) {
            pReport->addMessage(strLine);
        }
    }
    return listFrame;
}

void tellStretchingThatStays(const DataSet& data, const MappingParameters& parameters, CRunReport& report)
{
    if (parameters.m_bApplyStretching && data.m_dfStretchAmplitude != 0) {
        report.addMessage(QStringLiteral("The stretching set before stays on, as this data set tells none: "
                                         "%L1 % at %L2°.")
                              .arg(data.m_dfStretchAmplitude)
                              .arg(data.m_dfStretchAzimuth),
                          Severity::Error);
    }
}

namespace {

// The file with the name of the project if it exists, else the one with the fixed name, which need not
// exist.
QString sideFileName(const DataSet& data, ResultFile file)
{
    const QString strOwn = fileOfProject(data, file);
    return QFileInfo::exists(strOwn) ? strOwn : data.m_strProjectDir + QLatin1Char('/') + fixedName(file);
}

// Adds a reason if the side file exists. A missing side file is no failure.
void addReason(QStringList* plistReason, const QString& strFileName, const QString& strReason)
{
    if (plistReason && !strReason.isEmpty() && QFileInfo::exists(strFileName)) {
        plistReason->append(strReason);
    }
}

// The distortion with its azimuths in the ranges of their boxes.
SeriesDistortion distortionOfPages(SeriesDistortion distortion)
{
    distortion.dfEllipseAzimuth = wrappedAzimuth(distortion.dfEllipseAzimuth);
    distortion.dfParabolicAzimuth = wrappedAxis(distortion.dfParabolicAzimuth);
    return distortion;
}

void openHotPixels(DataSet& data, CRunReport& report, QStringList* plistReason)
{
    QString strReason;
    if (!loadHotPixels(data, report, &strReason)) {
        addReason(plistReason, data.m_strProjectDir + QStringLiteral("/hotpixels.txt"), strReason);
    }
}

// Whether a side file was made from the frames as they are read now.
bool isOfReading(const DataSet& data, ResultFile file, const QString& strFile, CRunReport& report)
{
    const SeriesChoice& choice = data.m_reading.choice;
    const bool bOwn = strFile == fileOfProject(data, file);
    if (bOwn ? isMadeByChoice(strFile, choice) : choice.isPlain()) {
        return true;
    }
    if (QFileInfo::exists(strFile)) {
        report.addMessage(
            QStringLiteral("%1 is not used, as it was made with another choice of frames, sums or bins.")
                .arg(strFile));
    }
    return false;
}

void openPeakList(DataSet& data, CRunReport& report, QStringList* plistReason)
{
    const QString strFile = sideFileName(data, ResultFile::Peaks);
    if (!isOfReading(data, ResultFile::Peaks, strFile, report)) {
        return;
    }
    QString strReason;
    const int nResult = readPeakList(data, strFile, report, &strReason);
    addReason(plistReason, strFile, strReason);
    if (nResult == 0) {
        report.addMessage(QStringLiteral("No peaks loaded."));
        return;
    }
    if (data.m_listPeakFrame.size() != data.m_listFrameFile.size()) {
        report.addMessage(QStringLiteral("Peak list is not used because it contains peaks from %L1 frames, "
                                         "while the current ed3d file contains %L2 frames.")
                              .arg(data.m_listPeakFrame.size())
                              .arg(data.m_listFrameFile.size()),
                          Severity::Error);
        data.m_listPeakFrame.clear();
        data.m_peakMapping.reset();
        return;
    }
    int nPeak = 0;
    for (const QList<Peak3D>& listPeak : qAsConst(data.m_listPeakFrame)) {
        nPeak += listPeak.size();
    }
    report.addMessage(QStringLiteral("%L1 peaks on %L2 frames loaded from %L3.")
                          .arg(nPeak)
                          .arg(data.m_listPeakFrame.size())
                          .arg(strFile));
}

void openShifts(DataSet& data, CRunReport& report, QStringList* plistReason)
{
    const QString strFile = sideFileName(data, ResultFile::Shifts);
    if (!isOfReading(data, ResultFile::Shifts, strFile, report)) {
        return;
    }
    QString strReason;
    if (loadShiftFile(data, strFile, report, &strReason) == 0) {
        addReason(plistReason, strFile, strReason);
        report.addMessage(QStringLiteral("No shift data loaded."));
        return;
    }
    report.addMessage(QStringLiteral("Shift correction data loaded from %1.").arg(strFile));
}

// Takes the frames, tilts and geometry of a project with its choice.
bool takeProject(SeriesData& data, const ProjectFile& project, const SeriesChoice* pChoice,
                 CRunReport& report, QStringList* plistReason)
{
    DataSet taken;
    taken.m_strProjectDir = project.folder();
    taken.m_strProjectName = project.baseName();
    taken.m_dfPixelSize = project.pixelSize();
    taken.m_distortion = distortionOfPages(project.distortion());
    taken.m_rotation = project.rotation();
    taken.m_listStageTilt = project.stageTilts();
    taken.m_listBeamTilt = project.beamTilts();
    taken.m_listOverallTilt = project.overallTilts();
    taken.m_listFrameFile = project.frameFiles();
    taken.m_listBeamTiltBreak = beamTiltBreaks(taken.m_listBeamTilt);
    QString strReason;
    const std::optional<SeriesChoice> kept = readSeriesChoice(fileOfProject(taken, QString()), &strReason);
    const SeriesChoice choice = pChoice ? *pChoice : kept.value_or(SeriesChoice());
    if (!kept && plistReason) {
        plistReason->append(strReason);
    }
    if (!takeSeriesChoice(taken, choice, report, &strReason)) {
        report.noteReason(strReason);
        report.addMessage(QStringLiteral("%1 cannot be read with the chosen frames, sums and bins: %2")
                              .arg(taken.m_strProjectName, strReason),
                          Severity::Error);
        if (pChoice) {
            return false;
        }
    }
    data.m_strProjectDir = taken.m_strProjectDir;
    data.m_strProjectName = taken.m_strProjectName;
    data.m_dfPixelSize = taken.m_dfPixelSize;
    data.m_distortion = taken.m_distortion;
    data.m_rotation = taken.m_rotation;
    data.m_listStageTilt = taken.m_listStageTilt;
    data.m_listBeamTilt = taken.m_listBeamTilt;
    data.m_listOverallTilt = taken.m_listOverallTilt;
    data.m_listBeamTiltBreak = taken.m_listBeamTiltBreak;
    data.m_listFrameFile = taken.m_listFrameFile;
    data.m_reading = taken.m_reading;
    return true;
}

}  // namespace

bool openProject(DataSet& data, MappingParameters& parameters, const QString& strFileName, CRunReport& report,
                 QStringList* plistReason, AxisLine axisLine, const SeriesChoice* pChoice)
{
    ProjectFile project;
    if (!project.read(strFileName, axisLine)) {
        report.addMessage(QStringLiteral("Error reading ed3d file: %1").arg(project.errorText()));
        report.noteReason(project.errorText().contains(strFileName)
                              ? project.errorText()
                              : QStringLiteral("%1: %2").arg(strFileName, project.errorText()));
        return false;
    }
    if (!takeProject(data, project, pChoice, report, plistReason)) {
        return false;
    }
    data.m_dfWavelength = project.wavelength();
    data.m_bRotationAxisKnown = project.hasRotationAxis();
    if (project.hasRotationAxis()) {
        data.m_dfRotationAxis = wrappedAxis(project.rotationAxis());
    } else {
        report.addMessage(QStringLiteral("The project has no rotation axis."));
    }
    data.m_nAxisDecimals = project.tellsDistortion() ? axisDecimals(data.m_dfRotationAxis) : 1;
    if (project.stretchingAmplitude() >= 0.01) {
        data.m_dfStretchAmplitude = project.stretchingAmplitude();
        data.m_dfStretchAzimuth = wrappedAzimuth(project.stretchingAzimuth() + 90);
        parameters.m_bApplyStretching = true;
    } else if (project.tellsDistortion()) {
        // A former stretching would be added to the lens that the project describes.
        data.m_dfStretchAmplitude = data.m_dfStretchAzimuth = 0;
        parameters.m_bApplyStretching = false;
    } else {
        tellStretchingThatStays(data, parameters, report);
    }
    clearDataSet(data);
    openHotPixels(data, report, plistReason);
    openPeakList(data, report, plistReason);
    report.goOn();
    openShifts(data, report, plistReason);
    roundToPages(data);
    report.goOn();
    return true;
}

bool countsAgree(const DataSet& data)
{
    return !data.m_listFrameFile.isEmpty() && data.m_listPeakFrame.size() == data.m_listFrameFile.size() &&
           data.m_listShift.size() == data.m_listFrameFile.size();
}

bool loadUnitCellAtOpening(DataSet& data, CRunReport& report, QStringList* plistReason)
{
    if (!countsAgree(data)) {
        report.addMessage(
            QStringLiteral("Frame counts of ED shift, peaks and input ed3d file do not match."));
        return false;
    }
    const QString strFile = sideFileName(data, ResultFile::Cell);
    QString strReason;
    const QList<Vec3D> listCell = readUnitCellFile(strFile, &strReason);
    if (listCell.isEmpty()) {
        addReason(plistReason, strFile, strReason);
        return false;
    }
    data.m_listCellFound = listCell;
    data.m_listCell = listCell;
    report.addMessage(QStringLiteral("Unit cell loaded from %1.").arg(strFile));
    return true;
}

bool openImageFiles(DataSet& data, const QStringList& listImage, CRunReport& report, QStringList* plistReason)
{
    if (listImage.isEmpty()) {
        return false;
    }
    const QStringList listFile = framesOfImageFiles(listImage, &report);
    clearDataSet(data);
    data.m_distortion = {};
    data.m_nAxisDecimals = 1;
    data.m_rotation = {};
    data.m_dfPixelSize /= data.m_reading.choice.nBin;  // the pixel size of the camera stays
    data.m_reading = {};
    data.m_listFrameFile = listFile;
    data.m_listStageTilt.clear();
    data.m_listBeamTilt.clear();
    for (int i = 0; i < listFile.size(); ++i) {
        data.m_listStageTilt.append(0.1 * i);
        data.m_listBeamTilt.append(0);
    }
    data.m_listOverallTilt = data.m_listStageTilt;
    data.m_listBeamTiltBreak = beamTiltBreaks(data.m_listBeamTilt);
    data.m_strProjectDir = QFileInfo(listFile.first()).absolutePath();
    data.m_strProjectName = QFileInfo(listFile.first()).completeBaseName();
    openHotPixels(data, report, plistReason);
    roundToPages(data);
    return true;
}

}  // namespace tessera
