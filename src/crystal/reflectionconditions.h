// Reflection conditions: parity tables of the reflection classes and the test of all 230 space groups.
#pragma once

#include "crystal/spacegroup.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// Writes the parity of the seven classical reflection classes to the log. A reflection below
/// `dfIntensityMin` counts as even; a row with even/(odd + 0.1) > 2 is red.
void outputReflectionStatistics(const QList<Peak3D>& listPeak, double dfIntensityMin, CRunReport& report);

/// Allowed reflections first, forbidden ones second, under `spaceGroup`. Reflections that are not
/// near-integer under `dfThreshold` and (0, 0, 0) are in neither. An empty input gives an empty outer list.
QList<QList<Peak3D>> classifyReflections(const CSpaceGroup& spaceGroup, const QList<Peak3D>& listPeak,
                                         double dfThreshold);

/// Writes one line per space group: counts and mean intensities of allowed and forbidden reflections.
/// Leaves `spaceGroup` on group 230. Can't be stopped.
void testReflectionConditions(const QList<Peak3D>& listPeak, double dfIndexThreshold, CSpaceGroup& spaceGroup,
                              CRunReport& report);

}  // namespace tessera
