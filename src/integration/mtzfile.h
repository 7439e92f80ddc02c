// MTZ file: merged intensities for programs of macromolecular crystallography.
#pragma once

#include "integration/structuredata.h"

#include <QByteArray>

namespace tessera {

/// The contents of the file: columns H, K, L, IMEAN, SIGIMEAN, one row per merged reflection, with indices in
/// CCP4's asymmetric unit of the space group and sorted by them. The title is sealed (sealedfile.h).
///
/// @param dfScale  factor of the intensities, the same as in the HKLF 4 file
/// @return empty without merged reflections, since the format cannot hold an empty list
/// Source: gemmi, which writes it.
QByteArray mtzBytes(const StructureData& data, double dfScale);

}  // namespace tessera
