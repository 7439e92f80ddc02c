// Wavelength of the electrons from the accelerating voltage.
#pragma once

namespace tessera {

/// The relativistic wavelength λ = hc / √(E (E + 2mc²)) of electrons of energy E, Å.
///
/// @param dfKilovolts  accelerating voltage, kV; not above 0 gives 0
/// Source: Williams & Carter, Transmission Electron Microscopy, equation 1.6; constants of CODATA 2022.
double electronWavelength(double dfKilovolts);

}  // namespace tessera
