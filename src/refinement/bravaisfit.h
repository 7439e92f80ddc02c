// Fits under the constraints of a Bravais type, and the model with standard errors that is made of a fit.
#pragma once

#include "refinement/geometryrefinement.h"
#include "refinement/geometryrounds.h"

#include <optional>

namespace tessera {

/// Computes geometry, cell and standard errors of a fit.
/// @param bEllipse  whether the fit has the ellipse in place of the stretching
GeometryModel geometryModel(const GeometryWork& work, const GeometryFit& fit, bool bEllipse);

/// Tries the Bravais types in their order and returns the model of the first one under which the rms in the
/// plane of the frames grows by no more than 2 % over that of the free cell; none if no type does.
///
/// The free terms are those of the free fit. Stretching and ellipse are both tried, since a constrained cell
/// determines both components of either, and the better one is kept.
std::optional<GeometryModel> bravaisModel(const GeometryWork& work, const GeometryRefinementOptions& options,
                                          const GeometryModel& free, CRunReport& report);

}  // namespace tessera
