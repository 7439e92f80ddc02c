// tessera-batch: the whole road from frames to result files, without a window.
#include "batch/batchoptions.h"
#include "batch/batchreport.h"
#include "batch/batchroad.h"
#include "batch/misplacedoutput.h"
#include "batch/standardoutput.h"
#include "batch/summary.h"
#include "records/wholefile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>

namespace tessera {

namespace {

/// @return empty, or why the file was not written
QString writeFile(const QString& strFileName, const QByteArray& bytes)
{
    QString strReason;
    if (isStandardOutput(strFileName)) {
        strReason = printToStandardOutput(bytes);
    } else if (writeWholeFile(strFileName, bytes, &strReason)) {
        return {};
    }
    if (!strReason.isEmpty()) {
        std::fprintf(stderr, "%s\n", strReason.toUtf8().constData());
    }
    return strReason;
}

/// Puts a summary of a run that has not ended in the place of the one before, so that a run that is killed is
/// not taken for the former one. Pipes and the like get the last word only.
bool markUnfinished(const BatchOptions& options)
{
    const QFileInfo info(options.strJsonFile);
    if (options.strJsonFile.isEmpty() || isStandardOutput(options.strJsonFile) ||
        (info.exists() && !info.isFile())) {
        return true;
    }
    if (!options.strOutDir.isEmpty()) {
        QDir().mkpath(options.strOutDir);  // where the summary mostly stands
    }
    const QJsonObject summary = {
        {QStringLiteral("stage"), QStringLiteral("none")},
        {QStringLiteral("reached"), false},
        {QStringLiteral("failed"), QStringLiteral("unfinished")},
        {QStringLiteral("reason"), QStringLiteral("at work, or killed before its end")}};
    return !info.absoluteDir().exists() ||
           writeFile(options.strJsonFile, QJsonDocument(summary).toJson()).isEmpty();
}

int badUsage(const QString& strError)
{
    std::fprintf(stderr, "tessera-batch: %s\nSee tessera-batch --help.\n", strError.toUtf8().constData());
    return 2;
}

/// Walks the road. What no stage expects, such as memory that is not there, ends it like bad data.
bool walk(CBatchRoad& road, CBatchReport& report)
{
    try {
        return road.run();
    } catch (const std::exception& error) {
        report.fail(QStringLiteral("Error: %1").arg(QString::fromUtf8(error.what())));
    } catch (const wchar_t* pszError) {
        report.fail(QStringLiteral("Error: %1").arg(QString::fromWCharArray(pszError).trimmed()));
    }
    return false;
}

/// The table of --summary. False when a file is bad, a series failed, or the table could not be printed.
bool printSummary(const QStringList& listFileName)
{
    QList<SummaryFile> listFile;
    for (const QString& strFileName : listFileName) {
        listFile.append(readSummaryFile(strFileName));
    }
    const QList<SummaryRow> listRow = summaryRows(listFile);
    const bool bPrinted = writeFile(QStringLiteral("-"), summaryText(listRow).toUtf8()).isEmpty();
    return bPrinted && std::all_of(listRow.begin(), listRow.end(),
                                   [](const SummaryRow& row) { return row.state == SummaryState::Reached; });
}

}  // namespace

}  // namespace tessera

int main(int argc, char* argv[])
{
    using namespace tessera;
    // A reader that goes away, as `head` does, is no reason to leave the road half done.
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessera-batch"));
    // Logs of many series are compared and read by scripts, so their numbers have one form.
    QLocale::setDefault(QLocale::c());

    QString strError;
    QString strHelp;
    const std::optional<BatchOptions> options = parseBatchOptions(application.arguments(), strError, strHelp);
    if (!options) {
        return badUsage(strError);
    }
    if (!strHelp.isEmpty()) {
        std::fputs(strHelp.toUtf8().constData(), stdout);
        return 0;
    }
    if (options->bSummary) {
        return printSummary(options->listInput) ? 0 : 1;
    }
    const QString strMisplaced = misplacedOutput(*options);
    if (!strMisplaced.isEmpty()) {
        return badUsage(strMisplaced);
    }

    if (!markUnfinished(*options)) {
        return 1;
    }
    // Whoever reads the summary from the standard output wants nothing else there.
    CBatchReport report(isStandardOutput(options->strJsonFile) ? stderr : stdout);
    CBatchRoad road(*options, report);
    bool bReached = walk(road, report);
    QStringList listWarning = report.redLines();
    QString strReason;
    if (!bReached) {
        strReason = report.reason();
        listWarning.removeOne(strReason);
    }
    const QString strBase = road.resultBase();
    if (!strBase.isEmpty()) {
        const QString strUnwritten = writeFile(strBase + QStringLiteral(".log"), report.log().toUtf8());
        if (bReached) {
            strReason = strUnwritten;
        }
        bReached = bReached && strUnwritten.isEmpty();
    }
    if (!options->strJsonFile.isEmpty()) {
        QJsonObject summary = road.summary();
        summary[QStringLiteral("reached")] = bReached;
        summary[QStringLiteral("warnings")] = QJsonArray::fromStringList(listWarning);
        if (!bReached) {
            summary[QStringLiteral("reason")] = strReason;
        }
        bReached = writeFile(options->strJsonFile, QJsonDocument(summary).toJson()).isEmpty() && bReached;
    }
    return bReached ? 0 : 1;
}
