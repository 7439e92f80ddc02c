// BatchOptions: what the command line of tessera-batch asks for.
#pragma once

#include "road/roadoptions.h"

#include <QString>
#include <QStringList>

namespace tessera {

struct BatchOptions {
    RoadOptions road;
    bool bSummary = false;  ///< no series: the table of those whose files of --json are the input
    QString strJsonFile;    ///< takes the summary; empty: none
    QString strReportFile;  ///< takes the report; empty: none
};

/// A command line as it was read. Where `strError` or `strHelp` has a text, nothing else counts.
struct ParsedOptions {
    BatchOptions options;
    QString strError;  ///< why the usage is bad
    QString strHelp;   ///< what was asked for with --help or --version
};

ParsedOptions parseBatchOptions(const QStringList& listArgument);

}  // namespace tessera
