// Table of the indexed reflections in the message log.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// Writes one text with a line per reflection to the log, in black. A d* of 0 shows an infinite d-value.
void outputIndexingResultsToWindow(const QList<Peak3D>& listPeakIndexed, CRunReport& report);

}  // namespace tessera
