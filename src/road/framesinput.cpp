#include "road/framesinput.h"

#include "dataset/calibration.h"
#include "dataset/framefiles.h"
#include "dataset/newproject.h"
#include "dataset/seriesreading.h"
#include "dataset/textlines.h"
#include "records/wholefile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace tessera {

namespace {

// This line marks a project that was written by this program and may be replaced.
const char* const g_pszMade = "Made from what the frames tell; a run on them makes it anew.";
constexpr qint64 g_nHeadSize = 1024;  // bytes; the line is within these

bool isMadeProject(const QString& strFile)
{
    QFile file(strFile);
    return QFileInfo(strFile).isFile() && file.open(QIODevice::ReadOnly) &&
           file.read(g_nHeadSize).contains(g_pszMade);
}

QString projectIn(const QString& strFolder, const QString& strName)
{
    return QDir(strFolder).absoluteFilePath(strName + QStringLiteral(".ed3d"));
}

/// A name that is not taken by a project of the user, neither with the frames nor with the results.
QString freeName(const QString& strName, const QStringList& listFolder)
{
    const auto isTaken = [&listFolder](const QString& str) {
        for (const QString& strFolder : listFolder) {
            const QString strFile = projectIn(strFolder, str);
            if (QFileInfo::exists(strFile) && !isMadeProject(strFile)) {
                return true;
            }
        }
        return false;
    };
    QString strFree = strName;
    for (int n = 1; isTaken(strFree); ++n) {
        strFree = strName + QStringLiteral("_frames") + (n > 1 ? QString::number(n) : QString());
    }
    return strFree;
}

void tellTaken(RoadState& state, const QString& strWhat, double dfValue, const QString& strUnit,
               const QString& strSource)
{
    state.report.addMessage(QStringLiteral("%1 %2 %3, from the frames (%4).")
                                .arg(strWhat, QString::number(dfValue, 'g', 6), strUnit, strSource));
}

/// Uses a number from the headers of the frames, unless an option gives it.
void takeNumber(RoadState& state, const ToldNumber& told, const std::optional<double>& dfGiven,
                double& dfTarget, const QString& strWhat, const QString& strUnit)
{
    if (told.isTold() && !dfGiven) {
        dfTarget = told.df;
        tellTaken(state, strWhat, told.df, strUnit, told.strSource);
    }
}

void takeTilts(RoadState& state, const ToldTilts& told)
{
    DataSet& dataSet = state.dataSet;
    const RoadOptions& options = state.options;
    if (told.list.size() != dataSet.m_listFrameFile.size() || told.list.isEmpty() || options.dfTiltStep) {
        return;
    }
    const double dfMore = options.dfTiltStart.value_or(told.list.first()) - told.list.first();
    for (int i = 0; i < told.list.size(); ++i) {
        dataSet.m_listStageTilt[i] = dataSet.m_listOverallTilt[i] = told.list[i] + dfMore;
    }
    state.report.addMessage(QStringLiteral("Tilts %1° to %2°, from the frames (%3).")
                                .arg(QString::number(dataSet.m_listOverallTilt.first(), 'g', 6),
                                     QString::number(dataSet.m_listOverallTilt.last(), 'g', 6),
                                     told.strSource));
}

/// If neither frames nor options give a wavelength, the pixel size follows from that of the calibration.
/// An unreadable calibration is reported when it is applied.
void followCalibration(RoadOptions& options)
{
    if (options.strCalibrationFile.isEmpty() || options.dfWavelength || options.facts->wavelength.isTold()) {
        return;
    }
    if (const std::optional<Calibration> calibration = readCalibration(options.strCalibrationFile)) {
        followWavelength(*options.facts, calibration->dfWavelength);
    }
}

/// Selects the frames of the requested size, or of the first size, if there are several.
/// @param listDoubt  gets a line for sizes that are left out because they have too few frames
/// @return empty, or why there are no frames of this size
QString takeFramesOfSize(RoadOptions& options, QStringList& listDoubt)
{
    QList<SizedFrames> listSized = framesBySize(options.listInput);
    if (listSized.size() < 2 && !options.sizeFrame.isValid()) {
        return {};
    }
    QStringList listText;
    for (const SizedFrames& sized : qAsConst(listSized)) {
        listText.append(QStringLiteral("%1x%2 (%3)")
                            .arg(sized.size.width())
                            .arg(sized.size.height())
                            .arg(sized.listFrame.size()));
    }
    if (!options.sizeFrame.isValid()) {
        listDoubt = dropStrayFrames(listSized);
    }
    for (const SizedFrames& sized : qAsConst(listSized)) {
        options.listSizeFound.append(sized.size);
    }
    const int nChosen = options.sizeFrame.isValid() ? options.listSizeFound.indexOf(options.sizeFrame) : 0;
    if (nChosen < 0) {
        return QStringLiteral("--size %1x%2: no frame has this size; there are %3")
            .arg(options.sizeFrame.width())
            .arg(options.sizeFrame.height())
            .arg(listText.join(QStringLiteral(", ")));
    }
    options.listInput = listSized[nChosen].listFrame;
    return {};
}

}  // namespace

QString nameOfSize(const QSize& size)
{
    return QStringLiteral("_%1x%2").arg(size.width()).arg(size.height());
}

QString takeFramesOfInput(RoadOptions& options)
{
    if (options.isProject() || options.listInput.isEmpty()) {
        return {};
    }
    QStringList listFrame, listFile;
    bool bFolder = false;
    for (const QString& strInput : options.listInput) {
        if (!QFileInfo(strInput).isDir()) {
            listFile.append(strInput);
            continue;
        }
        const QStringList listFound = framesInFolder(strInput);
        if (listFound.isEmpty()) {
            return QStringLiteral("%1: there are no frames in this folder").arg(strInput);
        }
        bFolder = true;
        listFrame += listFound;
    }
    options.listInputGiven = options.listInput;
    options.listInput = listFrame + framesOfFiles(listFile);
    QStringList listDoubt;
    if (bFolder || options.sizeFrame.isValid()) {
        const QString strError = takeFramesOfSize(options, listDoubt);
        if (!strError.isEmpty()) {
            return strError;
        }
    }
    options.facts = factsOfSeries(options.listInput, {}, options.dfWavelength.value_or(NAN));
    options.facts->listDoubt += listDoubt;
    followCalibration(options);
    if (bFolder) {
        const QFileInfo project(proposedProjectFile(options.listInput));
        const QString strOut = options.strOutDir.isEmpty() ? project.absolutePath() : options.strOutDir;
        const bool bOfSize = options.listSizeFound.size() > 1 && options.sizeFrame.isValid();
        options.strSeriesName = freeName(
            project.completeBaseName() + (bOfSize ? nameOfSize(options.sizeFrame) : QString()),
            {project.absolutePath(), strOut});
        options.bMakeProject = true;
    }
    const SeriesFacts& facts = *options.facts;
    options.bMakeProject = options.bMakeProject || (facts.wavelength.isTold() && !options.dfWavelength) ||
                           (facts.pixelSize.isTold() && !options.dfPixelSize) ||
                           (facts.tilts.isTold() && !options.dfTiltStep);
    return {};
}

void takeFacts(RoadState& state)
{
    const RoadOptions& options = state.options;
    if (!options.facts) {
        return;
    }
    const SeriesFacts& facts = *options.facts;
    DataSet& dataSet = state.dataSet;
    if (!options.strSeriesName.isEmpty()) {
        dataSet.m_strProjectName = options.strSeriesName;
    }
    takeNumber(state, facts.wavelength, options.dfWavelength, dataSet.m_dfWavelength,
               QStringLiteral("Wavelength"), QStringLiteral("Å"));
    takeNumber(state, facts.pixelSize, options.dfPixelSize, dataSet.m_dfPixelSize,
               QStringLiteral("Pixel size"), QStringLiteral("Å⁻¹"));
    takeTilts(state, facts.tilts);
    if (facts.exposure.isTold()) {
        tellTaken(state, QStringLiteral("Exposure"), facts.exposure.df, QStringLiteral("s"),
                  facts.exposure.strSource);
    }
    for (const QString& strDoubt : facts.listDoubt) {
        state.report.addMessage(QStringLiteral("Warning: %1").arg(strDoubt), Severity::Warning);
    }
    if (facts.rotationAxis.isTold() && !options.dfRotationAxis) {
        state.report.addMessage(
            QStringLiteral("Warning: the rotation axis is given as %1° (%2), but its sense is not certain: "
                           "it is determined from the peaks. --axis uses it as it is given.")
                .arg(QString::number(facts.rotationAxis.df, 'g', 6), facts.rotationAxis.strSource),
            Severity::Warning);
    }
}

bool writeMadeProject(RoadState& state)
{
    const RoadOptions& options = state.options;
    if (!options.bMakeProject || !state.bResultFolder) {
        return true;
    }
    const DataSet& dataSet = state.dataSet;
    const QString strFile = projectIn(dataSet.m_strProjectDir, dataSet.m_strProjectName);
    if (QFileInfo::exists(strFile) && !isMadeProject(strFile)) {
        state.report.addMessage(
            QStringLiteral("%1 exists and was not made from frames: it is not changed.").arg(strFile));
        return true;
    }
    NewProject project;
    const SourceSeries source = sourceSeries(dataSet);
    project.listFrame = source.listFrame;
    project.tilts = source.tilts;
    project.dfWavelength = dataSet.m_dfWavelength;
    project.dfPixelSize = source.dfPixelSize;
    project.dfRotationAxis = dataSet.m_dfRotationAxis;
    project.bAxisKnown = dataSet.m_bRotationAxisKnown;
    project.rotation = options.intensities.rotation.value_or(dataSet.m_rotation);
    project.strComment = QLatin1String(g_pszMade);
    QString strReason;
    const std::optional<QByteArray> bytesText = makeProjectText(project, strFile, &strReason);
    if (!bytesText) {
        state.report.addMessage(
            QStringLiteral("Warning: there is no project of these frames: %1").arg(strReason),
            Severity::Warning);
        return true;
    }
    if (!writeWholeFile(strFile, *bytesText, &strReason)) {
        state.report.fail(strReason);
        return false;
    }
    state.report.addMessage(QStringLiteral("The series as a project: %1").arg(strFile));
    return true;
}

}  // namespace tessera
