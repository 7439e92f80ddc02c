// Vector averaging: the piles that difference vectors form, and the heaviest of each neighbourhood.
#pragma once

#include "reciprocal/differencevectors.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

#include <vector>

namespace tessera {

/// The centres of the piles of vectors, shortest first, with the summed weight in dfIPoint.
///
/// Each vector is averaged with all that lie within `fTolerance` (Å⁻¹) and differ in length by less than
/// half of it; then the lighter of two neighbours goes, and every pile below a tenth of the heaviest.
/// Both v and −v stay in the result, where a pile is carried in a Peak3D. A run that was stopped gives an
/// empty list.
/// @param nJobs  threads; the result is the same for every number
QList<Peak3D> averageDifferenceVectors(const std::vector<DifferenceVector>& vecVector, float fTolerance,
                                       CRunReport& report, int nJobs = 1);

}  // namespace tessera
