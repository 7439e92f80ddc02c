// CIF file with cell, symmetry, experiment and merged intensities.
#pragma once

#include "integration/structuredata.h"

#include <QByteArray>

namespace tessera {

/// One data block with items of the core dictionary, sealed (sealedfile.h): cell with standard errors, space
/// group and its operations, electron diffraction experiment, number and agreement of the observations,
/// scattering factors of the elements, and the merged intensities as |F|². Unknown quantities are left out.
///
/// @param dfScale  factor of the intensities, the same as in the HKLF 4 file
/// Source: the CIF core dictionary 2.4.5 of the International Union of Crystallography.
QByteArray cifText(const StructureData& data, double dfScale);

}  // namespace tessera
