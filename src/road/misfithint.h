// Misfit hints: possible causes if most peaks are not on the lattice of the cell.
#pragma once

#include "road/roadstate.h"

#include <QStringList>

namespace tessera {

/// The changes that were tried.
struct MisfitHints {
    QStringList listHint;   ///< changes that improve the fit: sentences with figures, without full stop
    QStringList listTried;  ///< changes that do not, likewise
};

/// Tries changes in the order in which they are most often necessary: azimuth and sense of the rotation axis,
/// wavelength times pixel size, direct beam, and cells with other edges. It stops at the first change that
/// clearly raises the sharpness of the lattice or the fraction of fitting peaks beyond chance, since the
/// other changes could not be judged while that error remains. It takes some seconds, on samples of the
/// peaks.
///
/// @param state  with mapped peaks; unchanged
MisfitHints findMisfitHints(RoadState& state);

/// Finds hints and puts them into the log (as warnings) and the results, at most once in a road. If there are
/// none, log and results say what was tried.
void hintAtMisfit(RoadState& state);

}  // namespace tessera
