// Misfit hints: what would suit the peaks better, where most of them do not lie on the lattice of the cell.
#pragma once

#include "road/roadstate.h"

#include <QStringList>

namespace tessera {

/// What was tried, and what of it would suit the peaks better.
struct MisfitHints {
    QStringList listHint;   ///< sentences with the figures, without a full stop; mostly one
    QStringList listTried;  ///< what suits them no better, likewise
};

/// Tries, in the order of what is most often wrong, azimuth and sense of the rotation axis, wavelength times
/// pixel size, the direct beam, and cells of other edges. It ends with the first that raises the sharpness
/// of the lattice, or the part of the peaks that fits one beyond chance, clearly: the others would be judged
/// by what is wrong. Some seconds, as samples of the peaks are enough.
///
/// @param state  its peaks are mapped; nothing of it changes
MisfitHints findMisfitHints(RoadState& state);

/// Finds them, and tells and keeps them, once for a road: each hint is a warning. Where there is none the
/// log and the results say what was tried.
void hintAtMisfit(RoadState& state);

}  // namespace tessera
