// The .ins file: cell, symmetry and scattering factors for SHELX.
#pragma once

#include "integration/structuredata.h"

#include <QByteArray>

namespace tessera {

/// TITL, CELL, ZERR, LATT, SYMM, SFAC, UNIT, HKLF 4 and END, in lines of 80 columns at most, sealed
/// (sealedfile.h). SFAC gives each element with its electron scattering factors (electronscattering.h), f'
/// and f" and the absorption of 0, covalent radius and atomic weight. Where nobody has told the formula,
/// carbon stands for all atoms, which a remark says.
///
/// @param strReflections  name of the list of intensities, for a remark
/// Source: G. M. Sheldrick, SHELX-97 manual.
QByteArray insText(const StructureData& data, const QString& strReflections);

}  // namespace tessera
