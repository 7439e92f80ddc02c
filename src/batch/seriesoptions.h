// Series options: which frames of a series the driver takes, and what of them becomes one.
#pragma once

#include "batch/optionreader.h"
#include "road/roadoptions.h"

class QCommandLineParser;

namespace tessera {

/// Adds them to the help.
void addSeriesOptions(QCommandLineParser& parser);

/// Reads them; what is wrong is noted by the reader.
void takeSeriesOptions(COptionReader& reader, RoadOptions& options);

}  // namespace tessera
