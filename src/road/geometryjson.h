// The refined geometry as a JSON object for the summary.
#pragma once

#include "refinement/geometryrefinement.h"

#include <QJsonObject>

namespace tessera {

/// The cells (free, and constrained if a Bravais type was accepted), the numbers of the geometry with
/// standard errors, the rms before and after, and the fixed numbers. Amplitudes and third-order distortions
/// are in per cent, azimuths in degrees as in the window, lengths in pixels. If nothing was refined, only the
/// reason.
QJsonObject geometryObject(const GeometryRefinement& refinement);

}  // namespace tessera
