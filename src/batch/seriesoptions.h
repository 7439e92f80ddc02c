// Series options: the options of the driver for selecting, binning and summing frames.
#pragma once

#include "batch/optionreader.h"
#include "road/roadoptions.h"

class QCommandLineParser;

namespace tessera {

/// Adds the options to a parser.
void addSeriesOptions(QCommandLineParser& parser);

/// Reads the options; the reader records errors.
void takeSeriesOptions(COptionReader& reader, RoadOptions& options);

}  // namespace tessera
