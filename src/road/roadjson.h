// The summary of a road as JSON, which scripts read.
#pragma once

#include "road/roadresults.h"

#include <QJsonObject>

namespace tessera {

/// All results that are there, under the keys that docs/formats.md tells.
QJsonObject roadSummary(const RoadResults& results);

/// The summary of a road under way: it is taken for a failed one if the program is killed.
QJsonObject unfinishedSummary();

}  // namespace tessera
