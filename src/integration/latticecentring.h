// Centring: which lattice points a centred cell leaves out.
#pragma once

#include <array>

namespace tessera {

/// Whether a lattice with the centring P, A, B, C, I, F or R (obverse, hexagonal axes) has the point h, k, l.
/// Any other letter counts as P.
bool isLatticePoint(char chCentring, const std::array<int, 3>& anIndex);

}  // namespace tessera
