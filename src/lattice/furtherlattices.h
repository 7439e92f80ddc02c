// Further lattices: twins and neighbours of a crystal, in the points that its own lattice leaves over.
#pragma once

#include "lattice/directionsearch.h"
#include "lattice/latticefit.h"
#include "lattice/latticeturn.h"

#include <functional>
#include <optional>
#include <vector>

namespace tessera {

struct FurtherLatticesOptions {
    DirectionSearchOptions search;
    int nMostLattices = 6;      ///< the first counts
    double dfLeastTurn = 1.5;   ///< degrees: less, with the same cell, is the bent first lattice itself
    double dfLeastShare = 0.1;  ///< of the rest that a lattice has to explain beyond chance
};

struct OneOfLattices {
    LatticeBasis matBasis = LatticeBasis::Identity();
    LatticeFit fit;                   ///< of all points, those of other lattices included
    LatticeFit fitOfRest;             ///< of the points that the lattices before left over
    int nOwn = 0;                     ///< points with its label
    std::optional<LatticeTurn> turn;  ///< from the first, when its cell is the same; none for the first
};

struct LatticesOfPoints {
    std::vector<OneOfLattices> listLattice;  ///< the first as it was given, then as they were found
    std::vector<int> vecLabel;  ///< for each point the lattice whose reflection is next, −1 none
};

/// Searches what the lattices so far leave over for a lattice, first for one with the cell of the first, then
/// for any, and again, as long as one explains enough of the rest.
///
/// A lattice is refused whose points chance could have put there, and one that is a lattice before it over
/// again: turned by next to nothing, with more points between its own (a superstructure, findCosets()), or
/// with a part of them, as smeared strong reflections feign.
/// @param fnGoOn  asked now and then; false ends the search with the lattices found so far
LatticesOfPoints findFurtherLattices(const LatticeBasis& basis, const LatticePoints& listPoint,
                                     const FurtherLatticesOptions& options = {},
                                     const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
