// tessera-merge: sorts the crystals of many series by compound, and merges them.
#include "batch/batchreport.h"
#include "batch/standardoutput.h"
#include "crystals/mergeplace.h"
#include "merge/mergeoptions.h"
#include "records/regularfile.h"
#include "records/whatwasthrown.h"

#include <QCoreApplication>
#include <QFile>
#include <QLocale>

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace tessera {

namespace {

int badUsage(const QString& strError)
{
    std::fprintf(stderr, "tessera-merge: %s\nSee tessera-merge --help.\n", strError.toUtf8().constData());
    return 2;
}

constexpr qint64 g_nMostList = qint64(64) << 20;  ///< bytes: half a million folders of long names

/// @return empty, or why the list cannot be read
QString takeList(MergeOptions& options)
{
    if (options.strListFile.isEmpty()) {
        return {};
    }
    const QString strFault = QStringLiteral("--list %1: %2");
    QFile file(options.strListFile);
    QString strReason;
    QByteArray bytes;
    if (options.strListFile == QLatin1String("-")) {
        if (!file.open(stdin, QIODevice::ReadOnly)) {
            return strFault.arg(options.strListFile, file.errorString());
        }
        bytes = file.read(g_nMostList + 1);
    } else if (!openRegularFile(file, QIODevice::ReadOnly, strReason)) {
        return strFault.arg(options.strListFile, strReason);
    } else {
        // What has no size, as the files of the system itself, may keep a reader waiting for ever.
        bytes = file.read(std::min(file.size(), g_nMostList + 1));
    }
    if (bytes.size() > g_nMostList) {
        return strFault.arg(options.strListFile, QStringLiteral("it is too large for a list of folders"));
    }
    options.job.listFolder += foldersOfList(bytes);
    return options.job.listFolder.isEmpty()
               ? strFault.arg(options.strListFile, QStringLiteral("it names no folder"))
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

/// @return the exit status
int runMerging(const MergeOptions& options)
{
    CMergePlace place;
    const QString strNoPlace = place.take(options.job);
    if (!strNoPlace.isEmpty()) {
        std::fprintf(stderr, "tessera-merge: --out: %s.\n", strNoPlace.toUtf8().constData());
        return 1;
    }
    CBatchReport report(stdout);
    CrystalsJobResult result;
    if (!mergeFolders(options.job, report, result).finished() ||
        !writeMerged(options.job, place, report, result).finished()) {
        return 1;
    }
    const bool bAll = result.listUnread.empty() && result.mergedCount() == int(result.listGroup.size());
    return options.bStrict && !bAll ? 1 : 0;
}

/// @return the exit status
int run(const QStringList& listArgument)
{
    ParsedMerge parsed = parseMergeOptions(listArgument);
    if (!parsed.strError.isEmpty()) {
        return badUsage(parsed.strError);
    }
    if (!parsed.strHelp.isEmpty()) {
        std::fputs(parsed.strHelp.toUtf8().constData(), stdout);
        return 0;
    }
    QString strError = takeList(parsed.options);
    strError = strError.isEmpty() ? faultOf(parsed.options) : strError;
    return strError.isEmpty() ? runMerging(parsed.options) : badUsage(strError);
}

}  // namespace

}  // namespace tessera

int main(int argc, char* argv[])
{
    using namespace tessera;
    // A reader that goes away, as `head` does, is no reason to leave the files half done.
    std::signal(SIGPIPE, SIG_IGN);
#ifdef SIGXFSZ
    std::signal(SIGXFSZ, SIG_IGN);  // exceeding a file size limit is reported like a full disk
#endif
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessera-merge"));
    // Logs are compared and read by scripts, so their numbers have one form.
    QLocale::setDefault(QLocale::c());

    try {
        return run(application.arguments());
    } catch (...) {
        std::fprintf(stderr, "tessera-merge: %s\n", whatWasThrown().toUtf8().constData());
        return 1;
    }
}
