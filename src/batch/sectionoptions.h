// Section options: the options of the driver for sections of reciprocal space.
#pragma once

#include "batch/optionreader.h"
#include "road/exports.h"

class QCommandLineParser;

namespace tessera {

/// Adds the options to a parser.
void addSectionOptions(QCommandLineParser& parser);

/// Reads the options; the reader records errors.
void takeSections(COptionReader& reader, ExportOptions& exports);

}  // namespace tessera
