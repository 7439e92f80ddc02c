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

// The first line with the keyword and a number as its second word.
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

// The same where the keyword is the first word itself: names of frames may hold it.
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

// A wavelength or a size of a pixel; the pages hold both alike.
bool isUsableLength(double dfValue)
{
    const NumberBox& box = parameterOf(&DataSet::m_dfWavelength).box;
    return dfValue <= box.dfMaximum && spinBoxValue(dfValue, box) > 0;
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
    QByteArray bytesFile;
    if (!info.isFile() || !readFileBytes(strFileName, bytesFile, g_nMaxProjectFile)) {
        return fail(QStringLiteral("Could not load file: %1").arg(strFileName));
    }
    return readBytes(bytesFile, strFileName, axisLine);
}

bool ProjectFile::readBytes(const QByteArray& bytesFile, const QString& strFileName, AxisLine axisLine)
{
    if (bytesFile.size() > g_nMaxProjectFile) {
        return fail(QStringLiteral("The file is larger than %1 MB.").arg(g_nMaxProjectFile >> 20));
    }
    QString strText =
        QTextCodec::codecForUtfText(bytesFile, QTextCodec::codecForLocale())->toUnicode(bytesFile);
    if (strText.contains(QChar(0))) {
        return fail(QStringLiteral("The file is no text file: it holds NUL bytes."));
    }
    strText.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));

    QStringList listLine;
    const QStringList listAll = strText.split(QLatin1Char('\n'));
    for (int i = 0; i < listAll.size(); ++i) {
        if (listAll[i].isEmpty() || listAll[i].startsWith(QLatin1Char('#'))) {
            continue;
        }
        if (listAll[i].size() > g_nMaxProjectLine) {
            return fail(QStringLiteral("Line %1 has %2 characters; up to %3 can be read.")
                            .arg(i + 1)
                            .arg(listAll[i].size())
                            .arg(g_nMaxProjectLine));
        }
        listLine.append(listAll[i]);
    }

    ProjectFile project;
    const struct {
        const char* strKeyword;
        double* pdfValue;
        bool bMustBe;
        bool bLength;
    } aKeyword[] = {{"CCDPIXELSIZE", &project.m_dfPixelSize, true, true},
                    {"WAVELENGTH", &project.m_dfWavelength, true, true},
                    {"ROTATIONAXIS", &project.m_dfRotationAxis, axisLine == AxisLine::Needed, false},
                    {"STRETCHINGAMP", &project.m_dfStretchAmplitude, false, false},
                    {"STRETCHINGAZIMUTH", &project.m_dfStretchAzimuth, false, false}};
    for (const auto& row : aKeyword) {
        const QString strKeyword = QLatin1String(row.strKeyword);
        if (!findNumber(listLine, strKeyword, *row.pdfValue)) {
            if (row.bMustBe) {
                return fail(
                    QStringLiteral("Could not find keyword \"%1\" in the input file.").arg(strKeyword));
            }
            continue;
        }
        if (row.pdfValue == &project.m_dfRotationAxis) {
            project.m_bHasRotationAxis = true;
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

    if (!project.takeDistortion(listLine) || !project.takeRotation(listLine)) {
        return fail(project.m_strError);
    }

    // The closing line holds the opening word too, so that a list closed before it is opened is none.
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

    const QFileInfo info(strFileName);
    project.m_strBaseName = info.completeBaseName();
    project.m_strFolder = info.absolutePath();
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
        project.m_listFrameFile.append(project.m_strFolder + QLatin1Char('/') + strFrame);
        project.m_listStageTilt.append(dfStage);
        project.m_listBeamTilt.append(dfBeam);
        project.m_listOverallTilt.append(dfOverall);
    }
    *this = project;
    return true;
}

}  // namespace tessera
