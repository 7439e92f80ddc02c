// The MTZ file: merged intensities for the programs of macromolecular crystallography.
#pragma once

#include "integration/structuredata.h"

#include <QByteArray>

namespace tessera {

/// Columns H, K, L, IMEAN, SIGIMEAN, one line for each merged reflection, its indices in CCP4's asymmetric
/// unit of the space group, ordered by them. Sealed (sealedfile.h) in the title.
///
/// @param dfScale  that the intensities are multiplied by, as in the list of HKLF 4
/// @return empty without merged reflections, as the format holds no list without any
/// Source: gemmi, which writes it.
QByteArray mtzBytes(const StructureData& data, double dfScale);

}  // namespace tessera
