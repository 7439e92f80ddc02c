// Filter of reflections: those whose tilts are fit for a refinement.
#pragma once

#include "crystal/ewald.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// The reflections fit for tilt refinement: farther than `dfdRA` pixels from the rotation axis, dfIPoint
/// above `dfInt`, and the fitted frame less than 2 frames behind the frame of the record. A kept
/// reflection gets its dfTiltFit. An empty list, with a red line, for fewer than 2 tilts.
QList<Peak3D> filterReflections(const QList<Peak3D>& listPeak, double dfdRA, double dfInt,
                                const FramePositionGeometry& geometry, CRunReport& report);

}  // namespace tessera
