// The closing lines of a log, which summarize the results of a road.
#pragma once

#include "road/roadresults.h"

#include <QStringList>

namespace tessera {

/// Series and last stage, or why the road ended early; the cell, refined if possible; Laue class, space group
/// and statistics of the intensities; the files that were written; and the judgement, with the parts that are
/// not good. Missing results are left out. Empty if no stage was run.
QStringList closingLines(const RoadResults& results);

}  // namespace tessera
