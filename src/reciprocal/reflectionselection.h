// Reflection selection: the merged reflections that a point group of the merged view stands for.
#pragma once

#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

namespace tessera {

/// Collects the merged reflections that a point group of the merged view stands for. A negative nID gives a
/// red line.
///
/// @param listPeakMerged  the reflections to choose from
/// @param listViewPoint   the points of the merged view: reflections and the peaks of streaks
/// @param listGroupIndex  the group's indices into listViewPoint; invalid ones are passed over
/// @param listPeak        takes the reflections whose nID a point of the group has, in merged order
/// @return false, with listPeak untouched, when the view holds no points
bool selectReflectionsForProcessing(const QList<Peak3D>& listPeakMerged, const QList<Peak3D>& listViewPoint,
                                    const QList<int>& listGroupIndex, QList<Peak3D>& listPeak,
                                    CRunReport& report);

}  // namespace tessera
