// Cell relation: in words, how two lattices that are not one lie to each other.
#pragma once

#include "crystals/cellsettings.h"

#include <QString>

namespace tessera {

/// How many cells of one lattice fit into a cell of the other.
struct CellRelation {
    int nTimes = 1;         ///< 1: neither lattice contains the other
    bool bLarger = false;   ///< the cell of the first lattice contains nTimes cells of the second
    double dfDistance = 0;  ///< of the first to that superlattice, in units of the tolerance
};

/// Looks whether one of two lattices is a part of the other with two, three or four times the cell: an edge
/// that a run took double or half, a centring that it missed or saw where there is none.
/// Source: the sublattices of an index as Hermite's normal forms: Santoro & Mighell (1972), Acta Cryst. A28,
/// 284–287.
/// @param first, second  reduced bases
CellRelation relationBetween(const LatticeBasis& first, const LatticeBasis& second,
                             const CellTolerance& tolerance = {});

/// A sentence on a crystal whose lattice is not that of a group.
QString relationText(const LatticeBasis& crystal, const LatticeBasis& group,
                     const CellTolerance& tolerance = {});

}  // namespace tessera
