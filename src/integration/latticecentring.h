// Lattice centring: which reflections a centred cell forbids.
#pragma once

#include <array>

namespace tessera {

/// Whether the centring P, A, B, C, I, F or R (obverse setting, hexagonal axes) allows the reflection h, k,
/// l. Any other letter counts as P.
bool isLatticePoint(char chCentring, const std::array<int, 3>& anIndex);

}  // namespace tessera
