// Lorentz factor: what the time that a reflection spends on the sphere makes of its intensity.
#pragma once

#include "integration/observation.h"

#include <vector>

namespace tessera {

/// Puts into each observation the speed with which it passes the sphere over the median speed of the usable
/// ones.
///
/// At a steady turn (or in even steps) a reflection gathers counts for as long as its rocking curve of fixed
/// width in Å⁻¹ lies on the sphere, which is in proportion to 1 / v, where v = |d(excitation error)/d(tilt)|
/// is its speed; so v · I is on one scale. With x along the axis and a crystal that turns about it v is
/// |g_y| · π/180 to first order: 1/v is the L = 1 / (|g| sin ψ) of the rotation method.
/// Sources: Milch & Minor (1974), J. Appl. Cryst. 7, 502–505; Zhang, Oleynikov, Hovmöller & Zou (2010),
/// Z. Kristallogr. 225, 94–102.
///
/// Where the speed is not a number above 0 the factor is 1.
void applyLorentzFactor(std::vector<Observation>& listObservation);

}  // namespace tessera
