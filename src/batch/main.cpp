// tessera-batch: processes a series from frames to result files, without a window.
#include "batch/batchoptions.h"
#include "batch/batchreport.h"
#include "batch/misplacedoutput.h"
#include "batch/optionrules.h"
#include "batch/standardoutput.h"
#include "batch/summary.h"
#include "dataset/serieschoicefile.h"
#include "records/resultfile.h"
#include "records/wholefile.h"
#include "road/choiceinput.h"
#include "road/framesinput.h"
#include "road/report.h"
#include "road/road.h"
#include "road/roadjson.h"
#include "road/roadlog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QSize>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <utility>
#include <vector>

namespace tessera {

namespace {

/// Writes a file, or prints to the standard output, and reports a failure on the standard error.
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

QByteArray jsonBytes(const QJsonObject& object)
{
    return QJsonDocument(object).toJson();
}

/// Replaces an earlier summary by that of an unfinished run, so that it is not taken for the summary of this
/// run if the run is killed. Nothing is written to pipes and devices, which get the final summary only, or to
/// a folder that does not exist yet, which holds no earlier summary.
/// @return false, with the reason on the standard error, if the file cannot be written
bool markUnfinished(const BatchOptions& options)
{
    const QFileInfo info(options.strJsonFile);
    if (options.strJsonFile.isEmpty() || isStandardOutput(options.strJsonFile) ||
        (info.exists() && !info.isFile())) {
        return true;
    }
    if (!options.road.strOutDir.isEmpty()) {
        QDir().mkpath(options.road.strOutDir);  // usually the folder of the summary, too
    }
    return !info.absoluteDir().exists() ||
           writeFile(options.strJsonFile, jsonBytes(unfinishedSummary())).isEmpty();
}

/// Prints why the program cannot start.
/// @return the exit status
int badUsage(const QString& strError)
{
    std::fprintf(stderr, "tessera-batch: %s\nSee tessera-batch --help.\n", strError.toUtf8().constData());
    return 2;
}

/// Whether a file that "*.json" also matches is a record of a run or a choice of frames.
bool isOtherFile(const QString& strFileName)
{
    return strFileName.endsWith(resultSuffix(ResultFile::Run)) ||
           strFileName.endsWith(seriesChoiceFile(QString()));
}

/// Prints the table of --summary.
/// @return false if a file is bad, a series failed or has a result that is judged bad, or the table could
///         not be printed
bool printSummary(const QStringList& listFileName)
{
    // The records and choices of the series whose summaries are asked for are passed over. Where there are
    // no summaries, the table says of each that it is none.
    const bool bOthersAlone = std::all_of(listFileName.begin(), listFileName.end(), isOtherFile);
    QList<SummaryFile> listFile;
    for (const QString& strFileName : listFileName) {
        if (bOthersAlone || !isOtherFile(strFileName)) {
            listFile.append(readSummaryFile(strFileName));
        }
    }
    const QList<SummaryRow> listRow = summaryRows(listFile);
    const bool bPrinted = writeFile(QStringLiteral("-"), summaryText(listRow).toUtf8()).isEmpty();
    return bPrinted && std::all_of(listRow.begin(), listRow.end(),
                                   [](const SummaryRow& row) { return row.state == SummaryState::Reached; });
}

/// Adds --json and --report, whose files are written by this program and not by the stages, to the options
/// that appear in the record of the run.
void noteOwnFiles(BatchOptions& options)
{
    const std::pair<const char*, QString> aFile[] = {{"--json=", options.strJsonFile},
                                                     {"--report=", options.strReportFile}};
    for (const auto& [pszOption, strFile] : aFile) {
        if (!strFile.isEmpty()) {
            options.road.listCallerOption.append(
                QLatin1String(pszOption) +
                (isStandardOutput(strFile) ? strFile : QFileInfo(strFile).absoluteFilePath()));
        }
    }
}

/// Runs the stages and writes log, summary and report.
/// @return the exit status
int runSeries(const BatchOptions& options)
{
    if (!markUnfinished(options)) {
        return 1;
    }
    // If the summary goes to the standard output, nothing else may be printed there.
    CBatchReport report(isStandardOutput(options.strJsonFile) ? stderr : stdout);
    DataSet dataSet;
    CRoadLog log(report);
    RoadState state(options.road, dataSet, log);
    runRoad(state);
    const QString strUnwritten = endRoad(state, log);
    if (!strUnwritten.isEmpty()) {
        std::fprintf(stderr, "%s\n", strUnwritten.toUtf8().constData());
    }
    const RoadResults& results = state.results;
    if (!options.strJsonFile.isEmpty() &&
        !writeFile(options.strJsonFile, jsonBytes(roadSummary(results))).isEmpty()) {
        return 1;
    }
    if (!options.strReportFile.isEmpty()) {
        const QString strReason = writeReport(state, options.strReportFile);
        if (!strReason.isEmpty()) {
            std::fprintf(stderr, "%s\n", strReason.toUtf8().constData());
            return 1;
        }
    }
    const bool bBad = worstVerdict(results.listJudgement) == Verdict::Bad && !options.road.bAccept;
    return results.end.finished() && !bBad ? 0 : 1;
}

/// Takes the choice of frames of a series whose frames are known into the options, and checks all of these.
/// @return empty, or why the series cannot be run
QString takeChoiceAndCheck(BatchOptions& options)
{
    QString strError = takeChoiceOfInput(options.road);
    if (strError.isEmpty()) {
        strError = whatImagesLack(options.road);
    }
    if (strError.isEmpty()) {
        strError = misplacedOutput(options);
    }
    return strError;
}

/// The name of a file with the size of the frames in it: "s.json" becomes "s_512x512.json". No
/// name stays none.
QString fileOfSize(const QString& strFile, const QSize& size)
{
    const QFileInfo info(strFile);
    if (strFile.isEmpty()) {
        return strFile;
    }
    const QString strSuffix = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    return strFile.left(strFile.size() - strSuffix.size()) + nameOfSize(size) + strSuffix;
}

/// Runs each size of a folder with frames of several sizes as a series of its own. All of them are checked
/// before the first one runs.
/// @param asGiven  the options as parsed, with the folder as input
/// @return the worst exit status
int runSizes(const BatchOptions& asGiven, const QList<QSize>& listSize)
{
    if (isStandardOutput(asGiven.strJsonFile)) {
        return badUsage(QStringLiteral("--json -: the frames have %1 sizes, and each size has its own "
                                       "summary: give a file, or --size")
                            .arg(listSize.size()));
    }
    std::vector<BatchOptions> listRun;
    for (const QSize& size : listSize) {
        BatchOptions options = asGiven;
        options.road.sizeFrame = size;
        for (QString* pstrFile :
             {&options.strJsonFile, &options.strReportFile, &options.road.strSaveCalibrationFile}) {
            *pstrFile = isStandardOutput(*pstrFile) ? *pstrFile : fileOfSize(*pstrFile, size);
        }
        QString strError = takeFramesOfInput(options.road);
        strError = strError.isEmpty() ? takeChoiceAndCheck(options) : strError;
        if (!strError.isEmpty()) {
            return badUsage(QStringLiteral("frames of %1 × %2 pixels: %3")
                                .arg(size.width())
                                .arg(size.height())
                                .arg(strError));
        }
        noteOwnFiles(options);
        listRun.push_back(options);
    }
    int nStatus = 0;
    for (const BatchOptions& options : listRun) {
        std::printf(
            "The folder has frames of %d sizes, each of which is a series. Now %d x %d pixels: %s, %d "
            "frames.\n",
            listSize.size(), options.road.sizeFrame.width(), options.road.sizeFrame.height(),
            options.road.strSeriesName.toUtf8().constData(), options.road.listInput.size());
        nStatus = std::max(nStatus, runSeries(options));
    }
    return nStatus;
}

}  // namespace

}  // namespace tessera

int main(int argc, char* argv[])
{
    using namespace tessera;
    // A closed pipe, such as of `head`, must not end the run.
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessera-batch"));
    // Logs are compared and read by scripts, so their numbers must not depend on the locale.
    QLocale::setDefault(QLocale::c());

    ParsedOptions parsed = parseBatchOptions(application.arguments());
    BatchOptions& options = parsed.options;
    if (!parsed.strError.isEmpty()) {
        return badUsage(parsed.strError);
    }
    if (!parsed.strHelp.isEmpty()) {
        std::fputs(parsed.strHelp.toUtf8().constData(), stdout);
        return 0;
    }
    if (options.bSummary) {
        return printSummary(options.road.listInput) ? 0 : 1;
    }
    const BatchOptions asGiven = options;  // takeFramesOfInput() replaces the folder by its frames
    QString strError = takeFramesOfInput(options.road);
    // Frames of several sizes are several series, unless one size was asked for.
    const QList<QSize> listSize = options.road.listSizeFound;
    if (strError.isEmpty() && listSize.size() > 1 && !options.road.sizeFrame.isValid()) {
        return runSizes(asGiven, listSize);
    }
    strError = strError.isEmpty() ? takeChoiceAndCheck(options) : strError;
    if (!strError.isEmpty()) {
        return badUsage(strError);
    }
    noteOwnFiles(options);
    return runSeries(options);
}
