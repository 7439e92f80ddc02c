// spotProfile: the radial form of a spot on the detector.
#pragma once

#include "simulate/simulationparameters.h"

namespace tessera {

/// Density per square pixel at a squared distance from the centre, for a spot of one count. The
/// Moffat form (1 + r²/a²)^-2 has Lorentz-like tails and the half width of the Gaussian of the
/// same sigma. Source: Moffat (1969), Astron. Astrophys. 3, 455.
double spotProfile(const SimulationParameters& parameters, double dfSquaredDistance);

/// The share of the counts within a distance in pixels.
double spotShareWithin(const SimulationParameters& parameters, double dfRadius);

/// The distance in pixels beyond which a spot is not drawn.
double spotDrawRadius(const SimulationParameters& parameters);

}  // namespace tessera
