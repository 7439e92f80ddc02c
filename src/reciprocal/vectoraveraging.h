// Vector averaging: the piles that difference vectors form, and the heaviest of each neighbourhood.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// The centres of the piles of vectors, shortest first, with the summed weight in dfIPoint.
///
/// Each vector is averaged with all that lie within `fTolerance` (Å⁻¹) and differ in length by less than
/// half of it; then the lighter of two neighbours goes, and every pile below a tenth of the heaviest.
/// Both v and −v stay in the result. A run that was stopped gives an empty list.
QList<Peak3D> averageDifferenceVectors(const QList<Peak3D>& listVector, float fTolerance, CRunReport& report);

}  // namespace tessera
