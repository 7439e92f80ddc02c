// tessera-batch: the whole road from frames to result files, without a window.
#include "tools/batch/batchoptions.h"
#include "tools/batch/batchreport.h"
#include "tools/batch/batchroad.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QLocale>
#include <QSaveFile>

#include <cstdio>

namespace {

/// Whole or not at all; says on the standard error what is wrong.
bool writeFile(const QString& strFileName, const QByteArray& bytes)
{
    QSaveFile file(strFileName);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit()) {
        return true;
    }
    std::fprintf(stderr, "%s: %s\n", strFileName.toUtf8().constData(),
                 file.errorString().toUtf8().constData());
    return false;
}

}  // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessera-batch"));
    // Logs of many series are compared and read by scripts, so their numbers have one form.
    QLocale::setDefault(QLocale::c());

    QString strError;
    QString strHelp;
    const std::optional<BatchOptions> options = parseBatchOptions(application.arguments(), strError, strHelp);
    if (!options) {
        std::fprintf(stderr, "tessera-batch: %s\nSee tessera-batch --help.\n", strError.toUtf8().constData());
        return 2;
    }
    if (!strHelp.isEmpty()) {
        std::fputs(strHelp.toUtf8().constData(), stdout);
        return 0;
    }

    CBatchReport report;
    CBatchRoad road(*options, report);
    bool bReached = road.run();
    const QString strBase = road.resultBase();
    if (!strBase.isEmpty()) {
        bReached = writeFile(strBase + QStringLiteral(".log"), report.log().toUtf8()) && bReached;
    }
    if (!options->strJsonFile.isEmpty()) {
        bReached = writeFile(options->strJsonFile, QJsonDocument(road.summary()).toJson()) && bReached;
    }
    return bReached ? 0 : 1;
}
