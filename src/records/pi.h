// The number π, once for all folders.
#pragma once

namespace tessera {

constexpr double g_dfPi = 3.141592653589793;

}  // namespace tessera
