// Further lattices: finds twins and neighbours of a crystal in the points that its own lattice does not
// explain.
#pragma once

#include "lattice/directionsearch.h"
#include "lattice/latticefit.h"
#include "lattice/latticeturn.h"

#include <functional>
#include <optional>
#include <vector>

namespace tessera {

/// Options of the search for further lattices.
struct FurtherLatticesOptions {
    DirectionSearchOptions search;  ///< for lattices of any cell
    int nMostLattices = 6;          ///< including the first
    double dfLeastTurn = 1.5;   ///< degrees; a lattice of the same cell turned by less is the first one, bent
    double dfLeastShare = 0.1;  ///< share of the remaining points that a lattice must explain beyond chance
};

/// One of several lattices.
struct OneOfLattices {
    LatticeBasis matBasis = LatticeBasis::Identity();  ///< its basis
    LatticeFit fit;                                    ///< to all points, including those of other lattices
    LatticeFit fitOfRest;  ///< to the points that the lattices before it do not explain
    int nOwn = 0;          ///< number of points with its label
    std::optional<LatticeTurn>
        turn;  ///< from the first lattice, if the cell is the same; nothing for the first itself
};

/// All lattices of a set of points.
struct LatticesOfPoints {
    std::vector<OneOfLattices> listLattice;  ///< the given one first, then the others in the order found
    std::vector<int>
        vecLabel;  ///< for each point the number of the lattice with the nearest reflection; −1: none
};

/// Searches further lattices. In the points that no lattice explains yet, it searches first for a lattice
/// with the cell of the first one, then for any lattice, and repeats this as long as a lattice explains
/// enough of the remaining points.
///
/// A lattice is refused if its points could be there by chance, and if it is a former lattice in disguise:
/// turned by a very small angle, with additional points between the former ones (a superstructure, see
/// findCosets()), or with only some of the former points, as smeared strong reflections can pretend.
/// @param fnGoOn  asked now and then; false ends the search with the lattices found so far
LatticesOfPoints findFurtherLattices(const LatticeBasis& basis, const LatticePoints& listPoint,
                                     const FurtherLatticesOptions& options = {},
                                     const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
