// The CIF file: cell, symmetry, experiment and merged intensities.
#pragma once

#include "integration/structuredata.h"

#include <QByteArray>

namespace tessera {

/// A block of items of the core dictionary, sealed (sealedfile.h): cell with standard errors, space group and
/// its operations, the experiment with electrons as its probe, what the observations and their agreement are,
/// scattering factors of the elements, and the merged intensities as |F|². Numbers that are not known are
/// left out.
///
/// @param dfScale  that the intensities are multiplied by, as in the list of HKLF 4
/// Source: the CIF core dictionary 2.4.5 of the International Union of Crystallography.
QByteArray cifText(const StructureData& data, double dfScale);

}  // namespace tessera
