// Forbidden reflections: what multiple scattering puts where a space group has nothing.
#pragma once

#include "simulate/structurefactor.h"

#include <vector>

namespace tessera {

/// Gives reflections that glide planes and screw axes forbid a share of the mean |F|² of all others of about
/// their d*. Electrons scattered twice fill such places; lattice points that the centring leaves out stay
/// empty.
/// @param listReflection  kept in the order of h, k, l
void fillForbidden(const CStructureFactor& crystal, double dfMaxDStar, double dfShare,
                   std::vector<Reflection>& listReflection);

}  // namespace tessera
