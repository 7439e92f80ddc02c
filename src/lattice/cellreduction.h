// Cell reduction: the basis of Niggli's reduced cell.
#pragma once

#include "lattice/latticebasis.h"

namespace tessera {

/// Rows a, b, c of Niggli's reduced cell, right-handed. They are shortest vectors of the lattice, and their
/// angles are either all acute or all not acute.
/// @return a zero matrix when the basis spans no cell: for numbers that are not finite, co-planar vectors,
///         or edges that no crystal has (below 0.1 Å, or above 10⁵ Å as given)
/// Source: Křivý & Gruber (1976), Acta Cryst. A32, 297–298; Grosse-Kunstleve, Sauter & Adams (2004), Acta
/// Cryst. A60, 1–6, for the tolerances.
LatticeBasis niggliBasis(const LatticeBasis& basis);

}  // namespace tessera
