// The summary of a road as JSON, for scripts.
#pragma once

#include "road/roadresults.h"

#include <QJsonObject>

namespace tessera {

/// All results, under the keys described in docs/formats.md.
QJsonObject roadSummary(const RoadResults& results);

/// The summary of a road that is running. If the program is killed, it remains and counts as a failure.
QJsonObject unfinishedSummary();

}  // namespace tessera
