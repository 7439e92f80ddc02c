// Lattice rows: the best vectors of a search, refined against points, and the three that make the best cell.
#pragma once

#include "lattice/directionsearch.h"
#include "lattice/rowrefinement.h"

#include <optional>
#include <vector>

namespace tessera {

/// Refines the first few hundred vectors and keeps the best few that differ, with lengths within the range.
/// @return in order of quality; empty where it was ended
std::vector<LatticeRow> bestRows(const std::vector<Eigen::Vector3d>& vecVector,
                                 const LatticePoints& listPoint, double dfShortest,
                                 const DirectionSearchOptions& options, const std::function<bool()>& fnGoOn);

/// Of all bases of three rows that are not too flat, the smallest among those with nearly the most points.
/// @return none where fewer than ten points fit
std::optional<LatticeBasis> bestTriple(const std::vector<LatticeRow>& vecRow, const LatticePoints& listPoint,
                                       double dfTolerance);

}  // namespace tessera
