// Spot residuals: the distance of each peak from the place that a geometry predicts for its reflection.
#pragma once

#include "refinement/geometryrefinement.h"

#include <vector>

namespace tessera {

/// The distance of a peak from its expected place, measured less expected.
struct SpotResidual {
    int nFrame = 0;                   ///< from 0
    double dfTilt = 0;                ///< degrees, as the series has it
    FramePlace place;                 ///< relative to the frame's direct beam, pixels, as measured; y down
    double dfX = 0;                   ///< pixels of the frame freed of its distortions, to the right
    double dfY = 0;                   ///< pixels, down
    double dfAlong = 0;               ///< pixels, along the beam towards +z; of this frame alone
    std::array<int, 3> anIndex = {};  ///< h, k, l

    double radius() const;       ///< pixels from the direct beam, as measured
    double alongRadius() const;  ///< pixels, outwards; 0 at the beam itself
    double alongCircle() const;  ///< pixels, counter-clockwise on the screen
};

/// The residuals in the order of the spots.
std::vector<SpotResidual> spotResiduals(const std::vector<GeometrySpot>& listSpot,
                                        const DiffractionGeometry& geometry);

/// The spots that a model fits: those within the final limits of the refinement, with the indices that the
/// model gives them.
///
/// @param listSpot  the spots that were given to the refinement, or the same corrected for the model's drift
/// @param start     the geometry from which the refinement started
std::vector<GeometrySpot> spotsOfModel(std::vector<GeometrySpot> listSpot, const DiffractionGeometry& start,
                                       const GeometryModel& model);

}  // namespace tessera
