// Section options: which sections of reciprocal space the driver is to write, and how.
#pragma once

#include "batch/optionreader.h"
#include "road/exports.h"

class QCommandLineParser;

namespace tessera {

/// Adds them to the help.
void addSectionOptions(QCommandLineParser& parser);

/// Reads them; what is wrong is noted by the reader.
void takeSections(COptionReader& reader, ExportOptions& exports);

}  // namespace tessera
