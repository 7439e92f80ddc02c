// Fits under a Bravais type, and the models with their errors that fits become.
#pragma once

#include "refinement/geometryrefinement.h"
#include "refinement/geometryrounds.h"

#include <optional>

namespace tessera {

/// A fit with its geometry, cell and standard errors.
GeometryModel geometryModel(const GeometryWork& work, const GeometryFit& fit, bool bEllipse);

/// The first of the Bravais types, in their order, under which the rms in the plane grows by no more than 2 %
/// against that of the free cell. The terms are those of the free fit; of stretching and ellipse, of which a
/// type determines both components, the better one is taken.
std::optional<GeometryModel> bravaisModel(const GeometryWork& work, const GeometryRefinementOptions& options,
                                          const GeometryModel& free, CRunReport& report);

}  // namespace tessera
