#include "batch/summary.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

namespace tessera {

namespace {

const qint64 g_nLargestFile = 16 << 20;  ///< bytes; a summary has some kilobytes

double number(const QJsonValue& value)
{
    return value.toDouble(std::numeric_limits<double>::quiet_NaN());
}

/// The text without line breaks and other characters that would shift the columns of the table.
QString oneLine(const QString& strText)
{
    QString strLine = strText.simplified();
    for (QChar& c : strLine) {
        if (!c.isPrint() && !c.isSurrogate()) {
            c = QChar::ReplacementCharacter;
        }
    }
    return strLine;
}

QString numberText(double dfValue, int nDecimals = 0)
{
    if (!std::isfinite(dfValue)) {
        return QStringLiteral("-");
    }
    // A damaged file may have a number of any length, which would make the column that wide.
    return std::abs(dfValue) < 1e9 ? QString::number(dfValue, 'f', nDecimals)
                                   : QString::number(dfValue, 'g', 3);
}

/// 9.8844(10): the number with its standard error in units of the last digit, from 2 to 19, as is usual in
/// crystallography.
QString numberWithError(double dfValue, double dfError)
{
    if (!std::isfinite(dfValue) || !(dfError > 0) || std::isinf(dfError)) {
        return numberText(dfValue, 3);
    }
    const int nDecimals = int(std::clamp(std::ceil(std::log10(1.95 / dfError)), 0.0, 6.0));
    const double dfUnits = std::max(1.0, std::round(dfError * std::pow(10.0, nDecimals)));
    return QStringLiteral("%1(%2)").arg(numberText(dfValue, nDecimals), numberText(dfUnits));
}

/// The name of the series of a file: the folder of results/NAME/summary.json, else the file without its
/// suffix.
QString seriesPath(const QString& strFileName)
{
    const QFileInfo info(QDir::cleanPath(strFileName));
    if (info.fileName() == QLatin1String("summary.json") && info.path() != QLatin1String(".")) {
        return info.path();
    }
    QString strPath = info.filePath();
    if (info.suffix() == QLatin1String("json")) {
        strPath.chop(5);
    }
    return strPath;
}

/// The length of the folders with which all paths begin, including the last slash.
int commonFolders(const QStringList& listPath)
{
    QString strCommon = listPath.value(0).section(QLatin1Char('/'), 0, -2);
    for (const QString& strPath : listPath) {
        while (!strCommon.isEmpty() && !strPath.startsWith(strCommon + QLatin1Char('/'))) {
            strCommon = strCommon.section(QLatin1Char('/'), 0, -2);
        }
    }
    return strCommon.isEmpty() ? 0 : strCommon.size() + 1;
}

bool isBad(const QJsonValue& judgement)
{
    return judgement.toObject()[QStringLiteral("verdict")].toString() == QLatin1String("bad");
}

/// The last stage that is judged bad, with the reason and the first hint at the cause.
QString misfitNote(const QJsonObject& summary)
{
    const QJsonObject judgement = summary[QStringLiteral("judgement")].toObject();
    QString strPart;
    for (const char* pszPart : {"refine", "integrate", "index", "cell", "merge", "peaks", "shifts"}) {
        if (strPart.isEmpty() && isBad(judgement[QLatin1String(pszPart)])) {
            strPart = QLatin1String(pszPart);
        }
    }
    const QString strReason = judgement[strPart].toObject()[QStringLiteral("reason")].toString();
    const QString strHint = summary[QStringLiteral("hints")].toArray().at(0).toString();
    return strPart + QStringLiteral(": ") + strReason +
           (strHint.isEmpty() ? QString() : QStringLiteral(" Hint: ") + strHint);
}

/// The note of a row: the stage that failed or is bad and why, or the first warning.
QString noteOf(const QJsonObject& summary, SummaryState state)
{
    const QJsonArray arrayWarning = summary[QStringLiteral("warnings")].toArray();
    if (state == SummaryState::Misfit) {
        return misfitNote(summary);
    }
    if (state == SummaryState::Failed) {
        const QString strFailed = summary[QStringLiteral("failed")].toString();
        const QString strReason = summary[QStringLiteral("reason")].toString();
        const QString strWhere = strFailed.isEmpty()
                                     ? QStringLiteral("after ") + summary[QStringLiteral("stage")].toString()
                                     : strFailed;
        return strWhere + (strReason.isEmpty() ? QString() : QStringLiteral(": ") + strReason);
    }
    QString strNote = arrayWarning.at(0).toString();
    if (arrayWarning.size() > 1) {
        strNote += QStringLiteral(" (and %1 more)").arg(arrayWarning.size() - 1);
    }
    return strNote;
}

SummaryRow rowOf(const SummaryFile& file)
{
    SummaryRow row;
    row.strSeries = seriesPath(file.strFileName);
    row.strNote = file.strFault;
    if (!file.strFault.isEmpty()) {
        return row;
    }
    QJsonParseError error;
    const QJsonObject summary = QJsonDocument::fromJson(file.bytes, &error).object();
    if (error.error != QJsonParseError::NoError) {
        row.strNote = QStringLiteral("%1: not JSON: %2 at byte %3")
                          .arg(file.strFileName, error.errorString(), QString::number(error.offset));
    } else if (!summary[QStringLiteral("stage")].isString() || !summary[QStringLiteral("reached")].isBool()) {
        row.strNote = QStringLiteral("%1: not a summary of tessera-batch").arg(file.strFileName);
    } else {
        const bool bReached = summary[QStringLiteral("reached")].toBool();
        row.summary = summary;
        const bool bBad =
            summary[QStringLiteral("judgement")].toObject()[QStringLiteral("overall")].toString() ==
            QLatin1String("bad");
        row.state = !bReached ? SummaryState::Failed : bBad ? SummaryState::Misfit : SummaryState::Reached;
        row.dfIndexedShare = summary[QStringLiteral("indexedShare")].toDouble();
        row.strNote = noteOf(summary, row.state);
    }
    return row;
}

/// The refined cell with its standard errors, or the cell as found without errors.
QStringList cellTexts(const QJsonObject& summary)
{
    const QJsonObject refined = summary[QStringLiteral("refined")].toObject();
    const QJsonObject cell = refined.isEmpty() ? summary[QStringLiteral("cell")].toObject() : refined;
    const QJsonArray arrayParameter = cell[QStringLiteral("parameters")].toArray();
    const QJsonArray arrayError = cell[QStringLiteral("standardErrors")].toArray();
    QStringList listText;
    for (int i = 0; i < 6; ++i) {
        listText.append(numberWithError(number(arrayParameter.at(i)), number(arrayError.at(i))));
    }
    return listText;
}

double volume(const QJsonObject& summary)
{
    return number(summary[QStringLiteral("cell")].toObject()[QStringLiteral("volume")]);
}

QStringList rowTexts(const SummaryRow& row)
{
    static const char* const aszState[] = {"BAD FILE", "FAILED", "MISFIT", "ok"};
    const QJsonObject& summary = row.summary;
    const QJsonArray arrayOffset = summary[QStringLiteral("centreOffset")].toArray();
    const QJsonValue jumps = summary[QStringLiteral("shiftJumps")];
    QStringList listText = {oneLine(row.strSeries), QLatin1String(aszState[int(row.state)]),
                            oneLine(summary[QStringLiteral("stage")].toString(QStringLiteral("-")))};
    for (const char* pszKey : {"frames", "peaks", "reflections"}) {
        listText.append(numberText(number(summary[QLatin1String(pszKey)])));
    }
    for (const char* pszKey : {"indexedShare", "fitShare"}) {
        listText.append(numberText(100 * number(summary[QLatin1String(pszKey)]), 1));
    }
    listText.append(cellTexts(summary));
    listText.append(numberText(volume(summary), 1));
    listText.append(numberText(number(summary[QStringLiteral("maxShift")]), 1));
    listText.append(numberText(std::hypot(number(arrayOffset.at(0)), number(arrayOffset.at(1))), 2));
    listText.append(jumps.isArray() ? QString::number(jumps.toArray().size()) : QStringLiteral("-"));
    listText.append(oneLine(row.strNote));
    return listText;
}

/// Median with smallest and greatest value; "-" without values.
QString spreadText(std::vector<double> vecValue, int nDecimals)
{
    vecValue.erase(std::remove_if(vecValue.begin(), vecValue.end(),
                                  [](double dfValue) { return !std::isfinite(dfValue); }),
                   vecValue.end());
    if (vecValue.empty()) {
        return QStringLiteral("-");
    }
    std::sort(vecValue.begin(), vecValue.end());
    const size_t nMiddle = vecValue.size() / 2;
    const double dfMedian = vecValue.size() % 2 == 1 ? vecValue[nMiddle]
                                                     : (vecValue[nMiddle - 1] + vecValue[nMiddle]) / 2;
    return QStringLiteral("%1 (%2 to %3)")
        .arg(numberText(dfMedian, nDecimals), numberText(vecValue.front(), nDecimals),
             numberText(vecValue.back(), nDecimals));
}

}  // namespace

SummaryFile readSummaryFile(const QString& strFileName)
{
    SummaryFile result{strFileName, {}, {}};
    QFile file(strFileName);
    if (!file.exists()) {
        result.strFault = QStringLiteral("%1: no such file").arg(strFileName);
    } else if (!QFileInfo(strFileName).isFile()) {
        result.strFault = QStringLiteral("%1: not a file").arg(strFileName);
    } else if (file.size() > g_nLargestFile) {
        result.strFault = QStringLiteral("%1: too large for a summary").arg(strFileName);
    } else if (!file.open(QIODevice::ReadOnly)) {
        result.strFault = QStringLiteral("%1: %2").arg(strFileName, file.errorString());
    } else {
        result.bytes = file.readAll();
        if (file.error() != QFile::NoError) {
            result.strFault = QStringLiteral("%1: %2").arg(strFileName, file.errorString());
        }
    }
    return result;
}

QList<SummaryRow> summaryRows(const QList<SummaryFile>& listFile)
{
    QList<SummaryRow> listRow;
    QStringList listPath;
    for (const SummaryFile& file : listFile) {
        listRow.append(rowOf(file));
        listPath.append(listRow.last().strSeries);
    }
    const int nCommon = commonFolders(listPath);
    for (SummaryRow& row : listRow) {
        row.strSeries.remove(0, nCommon);
    }
    std::stable_sort(listRow.begin(), listRow.end(), [](const SummaryRow& one, const SummaryRow& other) {
        return std::tie(one.state, one.dfIndexedShare, one.strSeries) <
               std::tie(other.state, other.dfIndexedShare, other.strSeries);
    });
    return listRow;
}

QString summaryText(const QList<SummaryRow>& listRow)
{
    QList<QStringList> listLine = {{"series", "state", "stage", "frames", "peaks", "merged", "indexed/%",
                                    "fit/%", "a/Å", "b/Å", "c/Å", "α/°", "β/°", "γ/°", "V/Å³", "drift/px",
                                    "centre/px", "jumps", "note"}};
    std::vector<double> vecShare;
    std::vector<double> vecVolume;
    int anState[4] = {0, 0, 0, 0};
    for (const SummaryRow& row : listRow) {
        listLine.append(rowTexts(row));
        ++anState[int(row.state)];
        if (row.state == SummaryState::Reached) {
            vecShare.push_back(100 * number(row.summary[QStringLiteral("indexedShare")]));
            vecVolume.push_back(volume(row.summary));
        }
    }
    const int nColumns = listLine.first().size();
    const int nTextColumns = 3;  // left-aligned, like the note
    std::vector<int> vecWidth(nColumns, 0);
    for (const QStringList& listText : listLine) {
        for (int i = 0; i + 1 < nColumns; ++i) {
            vecWidth[i] = std::max(vecWidth[i], listText[i].size());
        }
    }
    QString strTable;
    for (const QStringList& listText : listLine) {
        QString strLine;
        for (int i = 0; i < nColumns; ++i) {
            const int nWidth = vecWidth[i];
            const QString strText = listText[i];
            strLine += i < nTextColumns ? strText.leftJustified(nWidth) : strText.rightJustified(nWidth);
            strLine += QLatin1String("  ");
        }
        while (strLine.endsWith(QLatin1Char(' '))) {
            strLine.chop(1);
        }
        strTable += strLine + QLatin1Char('\n');
    }
    const auto count = [&](SummaryState state) { return anState[int(state)]; };
    const int nMisfit = count(SummaryState::Misfit);
    const int nFailed = count(SummaryState::Failed);
    const int nReached = count(SummaryState::Reached);
    strTable += QStringLiteral(
                    "%1 series: %2 ok, %3 misfits, %4 failed; %5 bad files; of those that are ok, "
                    "indexed/%: %6, V/Å³: %7\n")
                    .arg(nMisfit + nFailed + nReached)
                    .arg(nReached)
                    .arg(nMisfit)
                    .arg(nFailed)
                    .arg(count(SummaryState::BadFile))
                    .arg(spreadText(vecShare, 1), spreadText(vecVolume, 1));
    return strTable;
}

}  // namespace tessera
