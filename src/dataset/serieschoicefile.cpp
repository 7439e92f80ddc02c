#include "dataset/serieschoicefile.h"

#include "dataset/textlines.h"
#include "records/reason.h"
#include "records/resultfile.h"
#include "records/wholefile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <vector>

namespace tessera {

namespace {

const QString g_strFormat = QStringLiteral("Tessera series"), g_strSuffix = QStringLiteral(".series.json");
constexpr int g_nVersion = 1;

/// A result that was made by another choice than the one that is in force.
struct FormerResult {
    QString strName;  ///< without folder
    QString strSum;
    SeriesChoice choice;
};

struct ChoiceFile {
    SeriesChoice choice;
    std::vector<FormerResult> listFormer;
};

QJsonObject objectOf(const SeriesChoice& choice)
{
    QJsonObject object{{QStringLiteral("bin"), choice.nBin}, {QStringLiteral("sum"), choice.nSum}};
    if (!choice.listFrames.isEmpty()) {
        object[QStringLiteral("frames")] = frameRangesText(choice.listFrames);
    }
    if (!choice.listSkipped.isEmpty()) {
        object[QStringLiteral("skip")] = frameRangesText(choice.listSkipped);
    }
    return object;
}

/// A key that is not there counts as 1; one of another type, or null, is a mistake of whoever wrote it.
bool readCount(const QJsonObject& object, const char* pszKey, int nMost, int& nCount)
{
    const QJsonValue value = object[QLatin1String(pszKey)];
    const double df = value.isUndefined() ? 1 : value.toDouble();
    if (!(df >= 1 && df <= nMost && df == std::floor(df))) {
        return false;
    }
    nCount = int(df);
    return true;
}

bool readRanges(const QJsonObject& object, const char* pszKey, QList<FrameRange>& listRange)
{
    const QJsonValue value = object[QLatin1String(pszKey)];
    const QString strText = value.toString();
    const auto ranges = strText.isEmpty() ? QList<FrameRange>() : frameRanges(strText);
    listRange = ranges.value_or(QList<FrameRange>());
    return (value.isUndefined() || value.isString()) && ranges.has_value();
}

std::optional<SeriesChoice> choiceOf(const QJsonObject& object)
{
    SeriesChoice choice;
    const bool bGood = readCount(object, "bin", g_nMostBin, choice.nBin) &&
                       readCount(object, "sum", g_nMostSum, choice.nSum) &&
                       readRanges(object, "frames", choice.listFrames) &&
                       readRanges(object, "skip", choice.listSkipped);
    return bGood ? std::optional<SeriesChoice>(choice) : std::nullopt;
}

/// @return false if the list exists and contains anything but results
bool readFormer(const QJsonValue& array, std::vector<FormerResult>& listFormer)
{
    const QJsonArray arrayFormer = array.toArray();
    for (const QJsonValue& value : arrayFormer) {
        const QJsonObject former = value.toObject();
        const FormerResult result = {
            former[QStringLiteral("file")].toString(), former[QStringLiteral("sha1")].toString(), {}};
        const auto choice = choiceOf(former);
        if (result.strName.isEmpty() || result.strSum.isEmpty() || !choice) {
            return false;
        }
        listFormer.push_back(result);
        listFormer.back().choice = *choice;
    }
    return array.isUndefined() || array.isArray();
}

std::optional<ChoiceFile> readFile(const QString& strFile, QString* pstrReason)
{
    ChoiceFile file;
    if (!QFileInfo::exists(strFile)) {
        return file;
    }
    const std::optional<QByteArray> bytes = readFileBytes(strFile, g_nMaxTextFile, pstrReason);
    if (!bytes) {
        return std::nullopt;
    }
    const QJsonObject object = QJsonDocument::fromJson(*bytes).object();
    const std::optional<SeriesChoice> choice = choiceOf(object);
    if (object[QStringLiteral("format")].toString() != g_strFormat ||
        object[QStringLiteral("version")].toInt() != g_nVersion || !choice) {
        giveReason(pstrReason, strFile,
                   QStringLiteral("it does not define frames, sums and bins of a series"));
        return std::nullopt;
    }
    file.choice = *choice;
    if (!readFormer(object[QStringLiteral("former")], file.listFormer)) {
        giveReason(pstrReason, strFile,
                   QStringLiteral("it does not say with which choice its results were made"));
        return std::nullopt;
    }
    return file;
}

/// Empty for a file that cannot be read.
QString sumOfFile(const QString& strFile)
{
    QFile file(strFile);
    QCryptographicHash hash(QCryptographicHash::Sha1);
    if (!QFileInfo(strFile).isFile() || !file.open(QIODevice::ReadOnly) || !hash.addData(&file)) {
        return {};
    }
    return QString::fromLatin1(hash.result().toHex());
}

const FormerResult* formerResult(const ChoiceFile& file, const QString& strName, const QString& strSum)
{
    for (const FormerResult& former : file.listFormer) {
        if (former.strName == strName && former.strSum == strSum) {
            return &former;
        }
    }
    return nullptr;
}

QByteArray textOf(const ChoiceFile& file)
{
    QJsonObject object = objectOf(file.choice);
    object[QStringLiteral("format")] = g_strFormat;
    object[QStringLiteral("version")] = g_nVersion;
    QJsonArray arrayFormer;
    for (const FormerResult& former : file.listFormer) {
        QJsonObject one = objectOf(former.choice);
        one[QStringLiteral("file")] = former.strName;
        one[QStringLiteral("sha1")] = former.strSum;
        arrayFormer.append(one);
    }
    if (!arrayFormer.isEmpty()) {
        object[QStringLiteral("former")] = arrayFormer;
    }
    return QJsonDocument(object).toJson();
}

}  // namespace

QString seriesChoiceFile(const QString& strBase)
{
    return strBase + g_strSuffix;
}

std::optional<SeriesChoice> readSeriesChoice(const QString& strBase, QString* pstrReason)
{
    const std::optional<ChoiceFile> file = readFile(seriesChoiceFile(strBase), pstrReason);
    return file ? std::optional<SeriesChoice>(file->choice) : std::nullopt;
}

bool keepSeriesChoice(const QString& strBase, const SeriesChoice& choice, QString* pstrReason)
{
    const QString strFile = seriesChoiceFile(strBase);
    const std::optional<ChoiceFile> before = readFile(strFile, pstrReason);
    if (!before) {
        return false;
    }
    if (before->choice == choice) {
        return true;
    }
    ChoiceFile after;
    after.choice = choice;
    for (const ResultFile result : {ResultFile::Shifts, ResultFile::Peaks}) {
        const QString strResult = strBase + resultSuffix(result);
        const QString strName = QFileInfo(strResult).fileName(), strSum = sumOfFile(strResult);
        if (strSum.isEmpty()) {
            continue;
        }
        const FormerResult* pKnown = formerResult(*before, strName, strSum);
        const SeriesChoice choiceThen = pKnown ? pKnown->choice : before->choice;
        if (choiceThen != choice) {
            after.listFormer.push_back({strName, strSum, choiceThen});
        }
    }
    if (choice.isPlain() && after.listFormer.empty()) {
        return !QFileInfo::exists(strFile) || QFile::remove(strFile) ||
               giveReason(pstrReason, strFile, QStringLiteral("it cannot be removed"));
    }
    return writeWholeFile(strFile, textOf(after), pstrReason);
}

bool isMadeByChoice(const QString& strFile, const SeriesChoice& choice)
{
    const QFileInfo info(strFile);
    const std::optional<ChoiceFile> file = readFile(
        seriesChoiceFile(info.absolutePath() + QLatin1Char('/') + info.completeBaseName()), nullptr);
    if (!file) {
        return false;
    }
    const FormerResult* pFormer = file->listFormer.empty()
                                      ? nullptr
                                      : formerResult(*file, info.fileName(), sumOfFile(strFile));
    return (pFormer ? pFormer->choice : file->choice) == choice;
}

}  // namespace tessera
