// BatchOptions: the parsed command line of tessera-batch.
#pragma once

#include "road/roadoptions.h"

#include <QString>
#include <QStringList>

namespace tessera {

/// The options of the driver.
struct BatchOptions {
    RoadOptions road;
    bool bSummary = false;  ///< print a table of series; the input is then the files that --json wrote
    QString strJsonFile;    ///< file for the summary; empty: none
    QString strReportFile;  ///< file for the report; empty: none
};

/// The result of parsing. The options are valid only if both texts are empty.
struct ParsedOptions {
    BatchOptions options;
    QString strError;  ///< why the command line is wrong
    QString strHelp;   ///< the text that --help or --version prints
};

/// Parses the command line.
/// @param listArgument  with the name of the program first
ParsedOptions parseBatchOptions(const QStringList& listArgument);

}  // namespace tessera
