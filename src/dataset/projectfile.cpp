#include "dataset/projectfile.h"

#include "dataset/pagerounding.h"
#include "dataset/textlines.h"
#include "dataset/textscanner.h"

#include <QFileInfo>
#include <QTextCodec>

#include <cmath>

namespace tessera {

const qint64 g_nMaxProjectFile = 64 << 20;
const int g_nMaxProjectLine = 1023;

namespace {

// Takes the number from the first line that contains the keyword and has a number as its second word.
// @return false where there is no such line
bool findNumber(const QStringList& listLine, const QString& strKeyword, double& dfValue)
{
    for (const QString& strLine : listLine) {
        if (!strLine.contains(strKeyword)) {
            continue;
        }
        const QByteArray strText = strLine.toUtf8();
        CTextScanner scanner(strText);
        QByteArray strWord;
        if (scanner.readWord(strWord) && scanner.readDouble(dfValue)) {
            return true;
        }
    }
    return false;
}

// Does the same for a keyword that must be the first word of its line, as it may occur in names of frames.
bool findOwnNumber(const QStringList& listLine, const char* pszKeyword, double& dfValue)
{
    for (const QString& strLine : listLine) {
        const QByteArray strText = strLine.toUtf8();
        CTextScanner scanner(strText);
        QByteArray strWord;
        if (scanner.readWord(strWord) && strWord == pszKeyword && scanner.readDouble(dfValue)) {
            return true;
        }
    }
    return false;
}

// Whether the pages can hold a number as a wavelength; the range and decimals of the pixel size are the same.
bool isUsableLength(double dfValue)
{
    const NumberBox& box = parameterOf(&DataSet::m_dfWavelength).box;
    return dfValue <= box.dfMaximum && spinBoxValue(dfValue, box) > 0;
}

struct ProjectLines {
    QStringList list;  // without empty lines and comments
    QString strFault;  // why the file cannot be a project; empty if it can
};

ProjectLines projectLines(const QByteArray& bytesFile)
{
    if (bytesFile.size() > g_nMaxProjectFile) {
        return {{}, QStringLiteral("The file is larger than %1 MB.").arg(g_nMaxProjectFile >> 20)};
    }
    QString strText =
        QTextCodec::codecForUtfText(bytesFile, QTextCodec::codecForLocale())->toUnicode(bytesFile);
    if (strText.contains(QChar(0))) {
        return {{}, QStringLiteral("The file is no text file: it holds NUL bytes.")};
    }
    strText.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));

    ProjectLines lines;
    const QStringList listAll = strText.split(QLatin1Char('\n'));
    for (int i = 0; i < listAll.size(); ++i) {
        if (listAll[i].isEmpty() || listAll[i].startsWith(QLatin1Char('#'))) {
            continue;
        }
        if (listAll[i].size() > g_nMaxProjectLine) {
            return {{},
                    QStringLiteral("Line %1 has %2 characters; up to %3 can be read.")
                        .arg(i + 1)
                        .arg(listAll[i].size())
                        .arg(g_nMaxProjectLine)};
        }
        lines.list.append(listAll[i]);
    }
    return lines;
}

}  // namespace

bool ProjectFile::fail(const QString& strError)
{
    m_strError = strError;
    return false;
}

bool ProjectFile::takeDistortion(const QStringList& listLine)
{
    for (const DistortionKeyword& row : g_aDistortionKeyword) {
        double& dfValue = m_distortion.*row.pMember;
        if (!findOwnNumber(listLine, row.pszKeyword, dfValue)) {
            continue;
        }
        m_bTellsDistortion = true;
        const QString strKeyword = QLatin1String(row.pszKeyword);
        if (!std::isfinite(dfValue)) {
            return fail(QStringLiteral("The value of \"%1\" is no finite number.").arg(strKeyword));
        }
        if (row.pMember == &SeriesDistortion::dfRadius && !(dfValue > 0)) {
            return fail(QStringLiteral("The value of \"%1\" is %2; it must be above 0.")
                            .arg(strKeyword)
                            .arg(dfValue));
        }
    }
    return true;
}

bool ProjectFile::takeRotation(const QStringList& listLine)
{
    for (const QString& strLine : listLine) {
        const QStringList listWord = strLine.simplified().split(QLatin1Char(' '));
        if (listWord.first() != QLatin1String("ROTATIONMODE")) {
            continue;
        }
        const std::optional<RotationMode> rotation = rotationModeOf(listWord.value(1));
        if (!rotation) {
            return fail(
                QStringLiteral("The value of \"ROTATIONMODE\" is none of continuous, stepped and "
                               "precession,ANGLE."));
        }
        m_rotation = *rotation;
        return true;
    }
    return true;
}

bool ProjectFile::read(const QString& strFileName, AxisLine axisLine)
{
    const QFileInfo info(strFileName);
    if (info.isFile() && info.size() > g_nMaxProjectFile) {
        return fail(QStringLiteral("The file is larger than %1 MB.").arg(g_nMaxProjectFile >> 20));
    }
    const std::optional<QByteArray> bytesFile = info.isFile() ? readFileBytes(strFileName, g_nMaxProjectFile)
                                                              : std::nullopt;
    if (!bytesFile) {
        return fail(QStringLiteral("Could not load file: %1").arg(strFileName));
    }
    return readBytes(*bytesFile, strFileName, axisLine);
}

bool ProjectFile::takeGeometry(const QStringList& listLine, AxisLine axisLine)
{
    const struct {
        const char* strKeyword;
        double* pdfValue;
        bool bMustBe;
        bool bLength;
    } aKeyword[] = {{"CCDPIXELSIZE", &m_dfPixelSize, true, true},
                    {"WAVELENGTH", &m_dfWavelength, true, true},
                    {"ROTATIONAXIS", &m_dfRotationAxis, axisLine == AxisLine::Needed, false},
                    {"STRETCHINGAMP", &m_dfStretchAmplitude, false, false},
                    {"STRETCHINGAZIMUTH", &m_dfStretchAzimuth, false, false}};
    for (const auto& row : aKeyword) {
        const QString strKeyword = QLatin1String(row.strKeyword);
        if (!findNumber(listLine, strKeyword, *row.pdfValue)) {
            if (row.bMustBe) {
                return fail(
                    QStringLiteral("Could not find keyword \"%1\" in the input file.").arg(strKeyword));
            }
            continue;
        }
        if (row.pdfValue == &m_dfRotationAxis) {
            m_bHasRotationAxis = true;
        }
        if (!std::isfinite(*row.pdfValue)) {
            return fail(QStringLiteral("The value of \"%1\" is no finite number.").arg(strKeyword));
        }
        if (row.bLength && !isUsableLength(*row.pdfValue)) {
            return fail(QStringLiteral("The value of \"%1\" is %2; it must be above 0 at six decimals and "
                                       "at most 10000.")
                            .arg(strKeyword)
                            .arg(*row.pdfValue));
        }
    }
    return true;
}

bool ProjectFile::takeFrames(const QStringList& listLine)
{
    // ENDFILELIST contains the word FILELIST, so a list that is closed before it is opened is not found.
    int nBegin = 0;
    while (nBegin < listLine.size() && !listLine[nBegin].contains(QLatin1String("FILELIST"))) {
        ++nBegin;
    }
    int nEnd = nBegin + 1;
    while (nEnd < listLine.size() && !listLine[nEnd].contains(QLatin1String("ENDFILELIST"))) {
        ++nEnd;
    }
    if (nEnd >= listLine.size()) {
        return fail(QStringLiteral("Could not find a file list in the input file."));
    }
    for (int i = nBegin + 1; i < nEnd; ++i) {
        if (!listLine[i].contains(QLatin1String("FILE"))) {
            continue;
        }
        const QByteArray strLine = listLine[i].toUtf8();
        CTextScanner scanner(strLine);
        QByteArray strKeyword, strName;
        double dfStage, dfBeam, dfOverall;
        if (!scanner.readWord(strKeyword) || !scanner.readWord(strName) || !scanner.readDouble(dfStage) ||
            !scanner.readDouble(dfBeam) || !scanner.readDouble(dfOverall)) {
            continue;
        }
        const QString strFrame = QString::fromUtf8(strName);
        if (!std::isfinite(dfStage) || !std::isfinite(dfBeam) || !std::isfinite(dfOverall)) {
            return fail(QStringLiteral("A tilt of the frame %1 is no finite number.").arg(strFrame));
        }
        m_listFrameFile.append(m_strFolder + QLatin1Char('/') + strFrame);
        m_listStageTilt.append(dfStage);
        m_listBeamTilt.append(dfBeam);
        m_listOverallTilt.append(dfOverall);
    }
    return true;
}

bool ProjectFile::readBytes(const QByteArray& bytesFile, const QString& strFileName, AxisLine axisLine)
{
    const ProjectLines lines = projectLines(bytesFile);
    if (!lines.strFault.isEmpty()) {
        return fail(lines.strFault);
    }
    const QFileInfo info(strFileName);
    ProjectFile project;
    project.m_strBaseName = info.completeBaseName();
    project.m_strFolder = info.absolutePath();
    if (!project.takeGeometry(lines.list, axisLine) || !project.takeDistortion(lines.list) ||
        !project.takeRotation(lines.list) || !project.takeFrames(lines.list)) {
        return fail(project.m_strError);
    }
    *this = project;
    return true;
}

}  // namespace tessera
