// Index spreading: h, k, l spread from reflection to reflection, outwards from the origin.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// Gives each reflection its indices from indexed neighbours, or by plain division where there are none.
///
/// Sorts `listPeak` by dfDStar and writes dfH, dfK, dfL. A neighbour lies within `fRadius` (Å⁻¹) and counts
/// when it is indexed and the step from it is whole within `fThreshold`; its weight falls with the distance,
/// so that the error of the basis does not add up. Passes repeat until one indexes nothing new.
/// Does nothing with a basis that CBasisSolver rejects. Returns false when the run was stopped; the list is
/// then as it was.
bool indexReflections(QList<Peak3D>& listPeak, const ReciprocalBasis& basis, float fThreshold, float fRadius,
                      CRunReport& report);

}  // namespace tessera
