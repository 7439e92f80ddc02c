#include "dataset/sidetexts.h"

#include "dataset/calibration.h"
#include "dataset/sidequantities.h"
#include "dataset/textlines.h"
#include "imagefiles/framename.h"
#include "records/resultfile.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr qint64 g_nMaxSideText = 1000000;  // bytes; longer texts are data
constexpr int g_nMaxTexts = 200;            // a folder with more has other texts for each frame
constexpr int g_nMaxDepth = 16;             // levels of objects
constexpr double g_dfSameValue = 0.005;     // relative; numbers that differ by less are equal but rounded

QString textOf(const QByteArray& bytesText)
{
    const QString str = QString::fromUtf8(withoutByteOrderMark(bytesText));
    return str.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(bytesText) : str;
}

/// Adds a doubt, but only the first few: a log with a line for each frame may contradict itself thousands
/// of times.
void addDoubt(SideTexts& texts, const QString& strDoubt)
{
    constexpr int nMostDoubts = 50;
    if (texts.listDoubt.size() < nMostDoubts && !texts.listDoubt.contains(strDoubt)) {
        texts.listDoubt.append(strDoubt);
    }
}

/// Keeps a number unless there is one already, to which a contradiction becomes a doubt.
void keep(SideTexts& texts, const SideNumber& number, const QString& strName)
{
    ToldNumber& kept = texts.*number.pTarget;
    const QString strSource = QStringLiteral("%1: %2").arg(strName, number.strKey);
    if (!number.strDoubt.isEmpty()) {
        addDoubt(texts, QStringLiteral("%1: %2").arg(strSource, number.strDoubt));
    }
    if (!std::isfinite(number.df)) {
        return;
    }
    if (!kept.isTold()) {
        kept = {number.df, strSource};
    } else if (std::abs(kept.df - number.df) > g_dfSameValue * std::abs(kept.df) + 1e-9) {
        addDoubt(texts, QStringLiteral("%1 is %2, but %3 is %4: the first is used.")
                            .arg(kept.strSource, QString::number(kept.df, 'g', 6), strSource,
                                 QString::number(number.df, 'g', 6)));
    }
}

void takePair(const QString& strKey, const QString& strValue, const QString& strName, SideTexts& texts)
{
    if (const std::optional<SideNumber> number = sideNumber(strKey, strValue)) {
        keep(texts, *number, strName);
    }
}

void takeValue(const QString& strKey, const QJsonValue& value, int nDepth, const QString& strName,
               SideTexts& texts)
{
    if (nDepth > g_nMaxDepth) {
        return;
    }
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it) {
            takeValue(it.key(), it.value(), nDepth + 1, strName, texts);
        }
    } else if (value.isDouble()) {
        takePair(strKey, QString::number(value.toDouble(), 'g', 12), strName, texts);
    } else if (value.isString()) {
        takePair(strKey, value.toString(), strName, texts);
    }
}

/// Whether this program or its simulator has written a file with this name, so that it is no text of an
/// acquisition.
bool isOwnText(const QString& strName, const QSet<QString>& setBase)
{
    static const QStringList s_listFixed = {"hotpixels.txt", fixedName(ResultFile::Shifts),
                                            fixedName(ResultFile::Peaks), fixedName(ResultFile::Cell)};
    const QString strLower = strName.toLower();
    if (s_listFixed.contains(strLower) || strLower.endsWith(QLatin1String("_truth.json")) ||
        strLower.endsWith(QLatin1String("_pos.txt")) || strLower.endsWith(resultSuffix(ResultFile::Run))) {
        return true;
    }
    return strLower.endsWith(resultSuffix(ResultFile::Log)) &&
           setBase.contains(QFileInfo(strName).completeBaseName());
}

/// Whether a JSON text is a summary of the driver or a calibration, which may have any name.
bool isOwnJson(const QByteArray& bytesText)
{
    const QJsonObject object = QJsonDocument::fromJson(bytesText).object();
    return object.contains(QStringLiteral("reached")) || object.contains(QStringLiteral("judgement")) ||
           isCalibration(object);
}

}  // namespace

void takeSideText(const QByteArray& bytesText, const QString& strName, SideTexts& texts)
{
    static const QRegularExpression s_reLine(
        QStringLiteral("^\\s*[\"'#*-]*\\s*([^:=]{2,60}?)[\"']?\\s*[:=]\\s*[\"']?(.{1,80})"));
    for (const QString& strLine : textOf(bytesText).split(QRegularExpression(QStringLiteral("[\r\n]")))) {
        const QRegularExpressionMatch match = s_reLine.match(strLine.left(200));
        if (match.hasMatch()) {
            takePair(match.captured(1), match.captured(2), strName, texts);
        }
    }
}

bool takeSideJson(const QByteArray& bytesText, const QString& strName, SideTexts& texts)
{
    const QJsonDocument document = QJsonDocument::fromJson(bytesText);
    if (!document.isObject()) {
        return false;
    }
    if (!isOwnJson(bytesText)) {
        takeValue({}, document.object(), 0, strName, texts);
    }
    return true;
}

void takeMdoc(const QByteArray& bytesText, const QString& strName, const QString& strFrameFile,
              SideTexts& texts)
{
    static const QRegularExpression s_reSection(
        QStringLiteral("^\\s*\\[\\s*(ZValue|FrameSet)\\s*=\\s*(\\d+)\\s*\\]"));
    static const QRegularExpression s_reAxis(QStringLiteral("[Tt]ilt axis angle\\s*=\\s*(-?[0-9.]+)"));
    int nSection = -1;
    double dfTilt = NAN;
    QString strFile;
    QByteArray bytesRest;
    const auto endSection = [&] {
        if (nSection >= 0 && std::isfinite(dfTilt)) {
            texts.hashTilt[strFile.isEmpty() ? nameOfImage(strFrameFile, nSection) : strFile] = dfTilt;
            texts.strTiltSource = QStringLiteral("%1: TiltAngle").arg(strName);
        }
        dfTilt = NAN;
        strFile.clear();
    };
    for (const QString& strLine : textOf(bytesText).split(QLatin1Char('\n'))) {
        const QRegularExpressionMatch section = s_reSection.match(strLine), axis = s_reAxis.match(strLine);
        const QString strKey = strLine.section(QLatin1Char('='), 0, 0).trimmed();
        const QString strValue = strLine.section(QLatin1Char('='), 1).trimmed();
        if (section.hasMatch()) {
            endSection();
            nSection = section.captured(2).toInt();
        } else if (axis.hasMatch()) {
            takePair(QStringLiteral("Tilt axis angle"), axis.captured(1), strName, texts);
        } else if (strKey == QLatin1String("TiltAngle")) {
            bool bNumber = false;
            const double df = strValue.toDouble(&bNumber);
            dfTilt = bNumber ? df : NAN;
        } else if (strKey == QLatin1String("SubFramePath")) {
            strFile = strValue.mid(
                std::max(strValue.lastIndexOf(QLatin1Char('\\')), strValue.lastIndexOf(QLatin1Char('/'))) +
                1);
        } else if (strKey == QLatin1String("Voltage") && !strValue.isEmpty()) {
            takePair(strKey, strValue + QStringLiteral(" kV"), strName, texts);
        } else if (strKey == QLatin1String("ExposureTime") || strKey == QLatin1String("CameraLength")) {
            takePair(strKey, strValue, strName, texts);
        }
    }
    endSection();
}

SideTexts readSideTexts(const QStringList& listFrame)
{
    SideTexts texts;
    if (listFrame.isEmpty()) {
        return texts;
    }
    const QString strFirst = frameName(listFrame.first()).strFile;
    const QDir dir(QFileInfo(strFirst).absolutePath());
    const QStringList listName = dir.entryList(QDir::Files | QDir::Readable, QDir::Name);
    QSet<QString> setBase;  // base names that logs of this program may have
    QSet<QString> setFrameFile;
    for (const QString& strName : listName) {
        if (strName.endsWith(QLatin1String(".ed3d")) || strName.endsWith(resultSuffix(ResultFile::Shifts)) ||
            strName.endsWith(resultSuffix(ResultFile::Peaks))) {
            setBase.insert(QFileInfo(strName).completeBaseName());
        }
    }
    for (const QString& strFrame : listFrame) {
        const QString strFile = frameName(strFrame).strFile;
        setFrameFile.insert(QFileInfo(strFile).fileName());
        setBase.insert(QFileInfo(strFile).completeBaseName());
    }
    const auto read = [&dir](const QString& strName) {
        const std::optional<QByteArray> bytesText = readFileBytes(dir.filePath(strName), g_nMaxSideText);
        return bytesText && !bytesText->contains('\0') ? bytesText : std::nullopt;
    };
    const QStringList listSuffix = {"txt", "log", "yaml", "yml", "ini", "json"};
    int nTexts = 0;
    for (const QString& strName : listName) {
        const QString strSuffix = QFileInfo(strName).suffix().toLower();
        const QString strStem = QFileInfo(strName).completeBaseName();
        if (strSuffix == QLatin1String("mdoc")) {
            // For "stack.mrc.mdoc" or "stack.mdoc" the sections are images of the stack; other texts must
            // name the files of their sections.
            const bool bOfFirst = strStem == QFileInfo(strFirst).completeBaseName();
            const QString strFile = bOfFirst ? QFileInfo(strFirst).fileName() : strStem;
            const std::optional<QByteArray> bytesText = read(strName);
            if (bytesText && (setFrameFile.contains(strFile) || bytesText->contains("SubFramePath"))) {
                takeMdoc(*bytesText, strName, strFile, texts);
            }
        } else if (listSuffix.contains(strSuffix) && !isOwnText(strName, setBase) && nTexts < g_nMaxTexts) {
            const std::optional<QByteArray> bytesText = read(strName);
            nTexts += bytesText ? 1 : 0;
            if (bytesText && !takeSideJson(*bytesText, strName, texts)) {
                takeSideText(*bytesText, strName, texts);
            }
        }
    }
    return texts;
}

}  // namespace tessera
