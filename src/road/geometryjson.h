// The refined geometry as an object of the summary.
#pragma once

#include "refinement/geometryrefinement.h"

#include <QJsonObject>

namespace tessera {

/// Cells (free, and constrained where a Bravais type was good), the numbers of the geometry with their
/// standard errors, rms before and after, and what was fixed. Amplitudes and third order in per cent,
/// azimuths in degrees as the window has them, lengths in pixels. Of a refinement that was not done the
/// reason alone.
QJsonObject geometryObject(const GeometryRefinement& refinement);

}  // namespace tessera
