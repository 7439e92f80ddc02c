// Duplicates: reflections that claim indices already taken.
#pragma once

#include "records/peak3d.h"

#include <QList>

namespace tessera {

/// Splits a list into the strongest reflection of each set of equal rounded indices (element 0, in order of
/// first appearance) and all others (element 1). Intensities are compared in single precision; the first of
/// equals stays. Friedel mates are not equal.
QList<QList<Peak3D>> takeDuplicateReflections(const QList<Peak3D>& listPeak);

}  // namespace tessera
