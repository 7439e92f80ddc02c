// tessera-merge: the crystals of many series told apart and merged.
#include "batch/batchreport.h"
#include "batch/standardoutput.h"
#include "merge/mergeoptions.h"
#include "records/regularfile.h"
#include "records/whatwasthrown.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <csignal>
#include <cstdio>

namespace tessera {

namespace {

int badUsage(const QString& strError)
{
    std::fprintf(stderr, "tessera-merge: %s\nSee tessera-merge --help.\n", strError.toUtf8().constData());
    return 2;
}

/// @return empty, or why the list cannot be read
QString takeList(MergeOptions& options)
{
    if (options.strListFile.isEmpty()) {
        return {};
    }
    QFile file(options.strListFile);
    QString strReason;
    if (options.strListFile == QLatin1String("-")) {
        if (!file.open(stdin, QIODevice::ReadOnly)) {
            return QStringLiteral("--list -: %1").arg(file.errorString());
        }
    } else if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        return QStringLiteral("--list %1: %2").arg(options.strListFile, strReason);
    }
    options.job.listFolder += foldersOfList(file.readAll());
    return options.job.listFolder.isEmpty()
               ? QStringLiteral("--list %1: it names no folder").arg(options.strListFile)
               : QString();
}

/// What speaks against a run, before anything is read. Empty if nothing does.
QString faultOf(const MergeOptions& options)
{
    QString strFault = misplacedMerge(options.job);
    if (!strFault.isEmpty()) {
        return QStringLiteral("--out: %1").arg(strFault);
    }
    if (!options.job.strKnownCellsFile.isEmpty() &&
        !readKnownCells(options.job.strKnownCellsFile, &strFault)) {
        return QStringLiteral("--known: %1").arg(strFault);
    }
    return {};
}

/// @return false where the run did not go through or a file could not be written
bool merge(const MergeOptions& options, CrystalsJobResult& result)
{
    CBatchReport report(stdout);
    try {
        return mergeFolders(options.job, report, result).finished() &&
               writeMerged(options.job, report, result).finished();
    } catch (...) {
        std::fprintf(stderr, "tessera-merge: %s\n", whatWasThrown().toUtf8().constData());
        return false;
    }
}

/// @return the exit status
int runMerging(const MergeOptions& options)
{
    // Hours of merging would be lost on a folder that cannot be made or written to.
    const QFileInfo folder(options.job.strOutFolder);
    const bool bMade = !folder.exists();
    if (!QDir().mkpath(folder.absoluteFilePath()) || !QFileInfo(folder.absoluteFilePath()).isWritable()) {
        std::fprintf(stderr, "tessera-merge: --out: nothing can be written to %s.\n",
                     QFile::encodeName(options.job.strOutFolder).constData());
        return 1;
    }
    CrystalsJobResult result;
    if (!merge(options, result)) {
        if (bMade) {
            QDir().rmdir(folder.absoluteFilePath());  // which leaves a folder with files
        }
        return 1;
    }
    const bool bAll = result.listUnread.empty() && result.mergedCount() == int(result.listGroup.size());
    return options.bStrict && !bAll ? 1 : 0;
}

}  // namespace

}  // namespace tessera

int main(int argc, char* argv[])
{
    using namespace tessera;
    // A reader that goes away, as `head` does, is no reason to leave the files half done.
    std::signal(SIGPIPE, SIG_IGN);
#ifdef SIGXFSZ
    std::signal(SIGXFSZ, SIG_IGN);  // a limit on files is told as a full disk is
#endif
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessera-merge"));
    // Logs are compared and read by scripts, so their numbers have one form.
    QLocale::setDefault(QLocale::c());

    ParsedMerge parsed = parseMergeOptions(application.arguments());
    MergeOptions& options = parsed.options;
    if (!parsed.strError.isEmpty()) {
        return badUsage(parsed.strError);
    }
    if (!parsed.strHelp.isEmpty()) {
        std::fputs(parsed.strHelp.toUtf8().constData(), stdout);
        return 0;
    }
    QString strError = takeList(options);
    strError = strError.isEmpty() ? faultOf(options) : strError;
    return strError.isEmpty() ? runMerging(options) : badUsage(strError);
}
