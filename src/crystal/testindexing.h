// Test run: the reflections that a cell could show, as points for a look.
#pragma once

#include "geometry/reciprocalbasis.h"
#include "records/peak3d.h"
#include "records/runreport.h"

#include <QList>

#include <optional>

namespace tessera {

/// Builds all reflections up to 1 Å⁻¹ of the cell in force, or of a fixed monoclinic cell without one, and
/// makes their points with showHKL3D(), intensity 100.
/// @param listPeak  replaced by the points; untouched without a cell in force, for one that
///                  CReflectionBuilder refuses and for too many reflections, which is then said in red
/// @return whether `listPeak` has been replaced
bool testIndexing(const std::optional<ReciprocalBasis>& basis, QList<Peak3D>& listPeak, CRunReport& report);

}  // namespace tessera
