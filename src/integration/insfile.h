// SHELX .ins file with cell, symmetry and scattering factors.
#pragma once

#include "integration/structuredata.h"

#include <QByteArray>

namespace tessera {

/// The contents of the file: TITL, CELL, ZERR, LATT, SYMM, SFAC, UNIT, HKLF 4 and END, in lines of at most 80
/// columns, sealed (sealedfile.h). SFAC lists each element with its electron scattering factors
/// (electronscattering.h), f', f" and absorption of 0, covalent radius and atomic weight. If the formula is
/// unknown, all atoms are given as carbon, and a remark says so.
///
/// @param strReflections  name of the intensity file, for a remark
/// Source: G. M. Sheldrick, SHELX-97 manual.
QByteArray insText(const StructureData& data, const QString& strReflections);

}  // namespace tessera
