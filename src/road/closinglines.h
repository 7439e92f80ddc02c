// The last lines of a road: what a reader wants to know who reads nothing else of the log.
#pragma once

#include "road/roadresults.h"

#include <QStringList>

namespace tessera {

/// Series and last stage, or why the road ended before its end; the cell, refined where it was; Laue class,
/// space group and figures of the intensities; the files that were written; and the judgement, with the parts
/// that are not good. What was not found is left out. Empty where no stage was run.
QStringList closingLines(const RoadResults& results);

}  // namespace tessera
