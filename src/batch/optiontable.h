// The table of the options of tessera-batch that are not numbers of the pages, with their help.
#pragma once

class QCommandLineParser;

namespace tessera {

/// Adds the options to a parser, in the order of the help.
void addNamedOptions(QCommandLineParser& parser);

}  // namespace tessera
