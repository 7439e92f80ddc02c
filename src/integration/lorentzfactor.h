// Lorentz factor: correction for the time that a reflection spends on the Ewald sphere.
#pragma once

#include "integration/observation.h"

#include <vector>

namespace tessera {

/// Sets the Lorentz factor of each observation: the speed at which the reflection crosses the Ewald sphere,
/// divided by the median speed of the usable observations.
///
/// In a steady rotation (or in equal steps) a reflection collects counts as long as its rocking curve, of
/// fixed width in Å⁻¹, is on the sphere. This time is proportional to 1 / v, where v = |d(excitation
/// error)/d(tilt)| is the speed, so that v · I is on a common scale. For a rotation about x, v is |g_y| ·
/// π/180 to first order, and 1/v is the Lorentz factor L = 1 / (|g| sin ψ) of the rotation method. Sources:
/// Milch & Minor (1974), J. Appl. Cryst. 7, 502–505; Zhang, Oleynikov, Hovmöller & Zou (2010), Z.
/// Kristallogr. 225, 94–102.
///
/// If the speed is not a positive number the factor is 1.
void applyLorentzFactor(std::vector<Observation>& listObservation);

}  // namespace tessera
