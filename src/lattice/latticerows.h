// Lattice rows: refines the vectors of a search, and chooses the three that make the best cell.
#pragma once

#include "lattice/directionsearch.h"
#include "lattice/rowrefinement.h"

#include <optional>
#include <vector>

namespace tessera {

/// Refines the first few hundred vectors against the points and returns the best few that differ, with
/// lengths within the range.
/// @param dfShortest  Å; the longest length is that of the options
/// @param fnGoOn      asked now and then whether to go on
/// @return the best first; empty where fnGoOn has ended it
std::vector<LatticeRow> bestRows(const std::vector<Eigen::Vector3d>& vecVector,
                                 const LatticePoints& listPoint, double dfShortest,
                                 const DirectionSearchOptions& options, const std::function<bool()>& fnGoOn);

/// Finds the best basis of three rows: among the bases that fit nearly the most points and are not too
/// flat, the one with the smallest cell.
/// @return nothing where fewer than ten points fit
std::optional<LatticeBasis> bestTriple(const std::vector<LatticeRow>& vecRow, const LatticePoints& listPoint,
                                       double dfTolerance);

}  // namespace tessera
