// tessera-batch: the whole road from frames to result files, without a window.
#include "app/records/wholefile.h"
#include "tools/batch/batchoptions.h"
#include "tools/batch/batchreport.h"
#include "tools/batch/batchroad.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QLocale>

#include <cstdio>
#include <exception>

namespace {

bool writeFile(const QString& strFileName, const QByteArray& bytes)
{
    QString strReason;
    if (writeWholeFile(strFileName, bytes, false, &strReason)) {
        return true;
    }
    std::fprintf(stderr, "%s\n", strReason.toUtf8().constData());
    return false;
}

/// Walks the road. What no stage expects, such as memory that is not there, ends it like bad data.
bool walk(CBatchRoad& road, CBatchReport& report)
{
    try {
        return road.run();
    } catch (const std::exception& error) {
        report.addMessage(QStringLiteral("Error: %1").arg(QString::fromUtf8(error.what())), Qt::red);
    } catch (const wchar_t* pszError) {
        report.addMessage(QStringLiteral("Error: %1").arg(QString::fromWCharArray(pszError).trimmed()),
                          Qt::red);
    }
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
    bool bReached = walk(road, report);
    const QString strBase = road.resultBase();
    if (!strBase.isEmpty()) {
        bReached = writeFile(strBase + QStringLiteral(".log"), report.log().toUtf8()) && bReached;
    }
    if (!options->strJsonFile.isEmpty()) {
        QJsonObject summary = road.summary();
        summary[QStringLiteral("reached")] = bReached;
        bReached = writeFile(options->strJsonFile, QJsonDocument(summary).toJson()) && bReached;
    }
    return bReached ? 0 : 1;
}
