#include "dataset/newproject.h"

#include "dataset/projectfile.h"
#include "records/reason.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QTextCodec>

#include <algorithm>
#include <cmath>

namespace tessera {

const int g_nDigits = 10;           // few enough that tilts in even steps show no binary fractions
const double g_dfTolerance = 1e-8;  // relative, for numbers that are read back
const double g_dfLeastWavelength = 0.003, g_dfGreatestWavelength = 0.2;  // Å: 3.6 MV and 3.7 kV
const double g_dfGreatestPixelSize = 0.1;                                // Å⁻¹

namespace {

QString number(double dfValue)
{
    return QString::number(dfValue, 'g', g_nDigits);
}

bool isSame(double dfRead, double dfMeant)
{
    return std::abs(dfRead - dfMeant) <= g_dfTolerance * std::max(1.0, std::abs(dfMeant));
}

}  // namespace

double pixelSizeFromCameraLength(double dfCameraLength, double dfDetectorPixel, double dfWavelength)
{
    if (!(dfCameraLength > 0 && dfDetectorPixel > 0 && dfWavelength > 0)) {
        return 0;
    }
    return dfDetectorPixel * 1e-3 / (dfCameraLength * dfWavelength);
}

bool isElectronWavelength(double dfWavelength)
{
    return dfWavelength >= g_dfLeastWavelength && dfWavelength <= g_dfGreatestWavelength;
}

bool isPixelSize(double dfPixelSize)
{
    return dfPixelSize > 0 && dfPixelSize <= g_dfGreatestPixelSize;
}

std::optional<NewProject> projectOfFacts(const SeriesFacts& facts, QString* pstrReason)
{
    QStringList listLacking;
    if (!facts.wavelength.isTold()) {
        listLacking.append(QStringLiteral("wavelength"));
    }
    if (!facts.pixelSize.isTold()) {
        listLacking.append(QStringLiteral("pixel size"));
    }
    if (!facts.tilts.isTold()) {
        listLacking.append(QStringLiteral("tilts"));
    }
    if (facts.listFrame.isEmpty() || !listLacking.isEmpty()) {
        if (pstrReason) {
            *pstrReason = facts.listFrame.isEmpty() ? QStringLiteral("There are no frames.")
                                                    : QStringLiteral("The frames do not tell: %1.")
                                                          .arg(listLacking.join(QStringLiteral(", ")));
        }
        return {};
    }
    NewProject project;
    project.listFrame = facts.listFrame;
    for (const double dfTilt : facts.tilts.list) {
        project.tilts.append(dfTilt, 0, dfTilt);
    }
    project.dfWavelength = facts.wavelength.df;
    project.dfPixelSize = facts.pixelSize.df;
    project.bAxisKnown = false;
    return project;
}

QString proposedProjectFile(const QStringList& listFrame)
{
    if (listFrame.isEmpty()) {
        return {};
    }
    const QFileInfo info(listFrame.first());
    QString strName = info.completeBaseName();
    for (const QString& strFrame : listFrame) {
        const QString strOther = QFileInfo(strFrame).completeBaseName();
        int nSame = 0;
        while (nSame < qMin(strName.size(), strOther.size()) && strName[nSame] == strOther[nSame]) {
            ++nSame;
        }
        strName.truncate(nSame);
    }
    const auto isJoint = [](QChar c) { return c.isDigit() || QStringLiteral("_-. ").contains(c); };
    while (!strName.isEmpty() && isJoint(strName[strName.size() - 1])) {
        strName.chop(1);
    }
    if (strName.isEmpty()) {
        strName = QFileInfo(info.absolutePath()).fileName();
    }
    if (strName.isEmpty()) {
        strName = QStringLiteral("series");
    }
    return info.absolutePath() + QLatin1Char('/') + strName + QStringLiteral(".ed3d");
}

namespace {

QString distortionLines(const SeriesDistortion& distortion)
{
    QString str;
    for (const DistortionKeyword& row : g_aDistortionKeyword) {
        str += QLatin1String(row.pszKeyword) + QLatin1Char(' ') + number(distortion.*row.pMember) +
               QLatin1Char('\n');
    }
    return str;
}

// What must be given before a text can be made; empty if nothing is missing.
QString missingPart(const NewProject& project, const QString& strProjectFile)
{
    const int nFrames = project.listFrame.size();
    if (nFrames == 0) {
        return QStringLiteral("Add the frames of the series.");
    }
    if (project.tilts.size() != nFrames) {
        return QStringLiteral("%L1 tilts for %L2 frames: there must be one tilt for each frame.")
            .arg(project.tilts.size())
            .arg(nFrames);
    }
    const QList<double>& listTilt = project.tilts.listOverall;
    if (nFrames > 1 && std::count(listTilt.begin(), listTilt.end(), listTilt.first()) == nFrames) {
        return QStringLiteral("All frames have the same tilt: give the step, the end or a list.");
    }
    if (!(project.dfWavelength > 0)) {
        return QStringLiteral("Give the accelerating voltage or the wavelength.");
    }
    if (!isElectronWavelength(project.dfWavelength)) {
        return QStringLiteral("%1 Å is no wavelength of electrons in a microscope.")
            .arg(project.dfWavelength);
    }
    if (!(project.dfPixelSize > 0)) {
        return QStringLiteral("Give the pixel size, or the camera length and the detector pixel.");
    }
    if (project.dfPixelSize > g_dfGreatestPixelSize) {
        return QStringLiteral(
                   "%1 Å⁻¹ cannot be the size of one pixel: a frame would reach far beyond all "
                   "reflections.")
            .arg(project.dfPixelSize);
    }
    if (project.rotation.kind == RotationKind::Precession &&
        !rotationModeOf(rotationModeText(project.rotation))) {
        return QStringLiteral("Give the angle of the precession, above 0 and at most 10 degrees.");
    }
    if (strProjectFile.isEmpty()) {
        return QStringLiteral("Give the name of the project file.");
    }
    return {};
}

// The lines before the list of frames.
QString headLines(const NewProject& project)
{
    const QString strAxis = project.bAxisKnown
                                ? QStringLiteral("ROTATIONAXIS %1\n").arg(number(project.dfRotationAxis))
                                : QString();
    const QString strComment = project.strComment.isEmpty()
                                   ? QString()
                                   : QStringLiteral("# %1\n").arg(QString(project.strComment).simplified());
    QString str = QStringLiteral(
                      "# %1 frames\n%7WAVELENGTH %2\n%3CCDPIXELSIZE %4\n"
                      "STRETCHINGAMP %5\nSTRETCHINGAZIMUTH %6\n")
                      .arg(QString::number(project.listFrame.size()), number(project.dfWavelength), strAxis,
                           number(project.dfPixelSize), number(project.dfStretchAmplitude),
                           number(project.dfStretchAzimuth), strComment);
    if (project.bTellDistortion || !project.distortion.isNone()) {
        str += distortionLines(project.distortion);
    }
    if (project.rotation.kind != RotationKind::Continuous) {
        str += QStringLiteral("ROTATIONMODE %1\n").arg(rotationModeText(project.rotation));
    }
    return str;
}

// The names of the frames relative to the folder of the project file. Links are resolved first: "../x" of a
// folder that is a link lies beside the folder that the link leads to.
QStringList relativeNames(const QStringList& listFrame, const QString& strProjectFile)
{
    QHash<QString, QString> hashFolder;
    const auto realFolder = [&hashFolder](const QString& strFile) {
        const QString strFolder = QFileInfo(strFile).absolutePath();
        if (!hashFolder.contains(strFolder)) {
            const QString strReal = QFileInfo(strFolder).canonicalFilePath();
            hashFolder[strFolder] = strReal.isEmpty() ? strFolder : strReal;
        }
        return hashFolder[strFolder];
    };
    const QDir dir(realFolder(strProjectFile));
    QStringList listName;
    for (const QString& strFrame : listFrame) {
        listName.append(dir.relativeFilePath(
            QDir(realFolder(strFrame)).absoluteFilePath(QFileInfo(strFrame).fileName())));
    }
    return listName;
}

QString frameLines(const QStringList& listName, const FrameTilts& tilts)
{
    QString str;
    for (int i = 0; i < listName.size(); ++i) {
        // The name is not put in by arg(), as it may contain a per cent sign.
        str += QStringLiteral("FILE ") + listName[i] + QLatin1Char(' ') + number(tilts.listStage[i]) +
               QLatin1Char(' ') + number(tilts.listBeam[i]) + QLatin1Char(' ') +
               number(tilts.listOverall[i]) + QLatin1Char('\n');
    }
    return str;
}

// Whether a project that was read back has the numbers that were written. The names must have been compared.
bool hasSameNumbers(const ProjectFile& read, const NewProject& project)
{
    bool bSame = read.frameFiles().size() == project.listFrame.size() &&
                 isSame(read.wavelength(), project.dfWavelength) &&
                 isSame(read.pixelSize(), project.dfPixelSize) &&
                 read.hasRotationAxis() == project.bAxisKnown &&
                 (!project.bAxisKnown || isSame(read.rotationAxis(), project.dfRotationAxis)) &&
                 read.rotation() == project.rotation &&
                 isSame(read.stretchingAmplitude(), project.dfStretchAmplitude) &&
                 isSame(read.stretchingAzimuth(), project.dfStretchAzimuth);
    if (read.tellsDistortion()) {
        for (const DistortionKeyword& row : g_aDistortionKeyword) {
            bSame = bSame && isSame(read.distortion().*row.pMember, project.distortion.*row.pMember);
        }
    }
    for (int i = 0; bSame && i < project.listFrame.size(); ++i) {
        bSame = isSame(read.stageTilts()[i], project.tilts.listStage[i]) &&
                isSame(read.beamTilts()[i], project.tilts.listBeam[i]) &&
                isSame(read.overallTilts()[i], project.tilts.listOverall[i]);
    }
    return bSame;
}

// Reads the text back. @return what has been lost; empty if nothing was
QString lossOnReading(const QByteArray& bytes, const QString& strProjectFile, const NewProject& project,
                      const QStringList& listName)
{
    ProjectFile read;
    if (!read.readBytes(bytes, strProjectFile, project.bAxisKnown ? AxisLine::Needed : AxisLine::MayLack)) {
        return read.errorText();
    }
    for (int i = 0; i < listName.size(); ++i) {
        if (read.frameFiles().value(i) != read.folder() + QLatin1Char('/') + listName[i]) {
            return QStringLiteral("A project file cannot hold the name \"%1\".").arg(listName[i]);
        }
    }
    return hasSameNumbers(read, project) ? QString()
                                         : QStringLiteral("A project file cannot hold one of the numbers.");
}

}  // namespace

std::optional<QByteArray> makeProjectText(const NewProject& project, const QString& strProjectFile,
                                          QString* pstrReason)
{
    const auto fail = [pstrReason](const QString& strReason) {
        giveReason(pstrReason, strReason);
        return std::nullopt;
    };
    const QString strMissing = missingPart(project, strProjectFile);
    if (!strMissing.isEmpty()) {
        return fail(strMissing);
    }
    const QStringList listName = relativeNames(project.listFrame, strProjectFile);
    for (const QString& strName : listName) {
        if (std::any_of(strName.begin(), strName.end(), [](QChar c) { return c.isSpace(); })) {
            return fail(
                QStringLiteral("\"%1\" contains a blank, which is not possible in a project file: rename it.")
                    .arg(strName));
        }
    }
    const QByteArray bytes = QTextCodec::codecForLocale()->fromUnicode(
        headLines(project) + QStringLiteral("FILELIST\n") + frameLines(listName, project.tilts) +
        QStringLiteral("ENDFILELIST\n"));
    const QString strLoss = lossOnReading(bytes, strProjectFile, project, listName);
    if (!strLoss.isEmpty()) {
        return fail(strLoss);
    }
    return bytes;
}

}  // namespace tessera
