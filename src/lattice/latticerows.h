// Lattice rows: vectors of real space refined against points, and the three that make the best cell.
#pragma once

#include "lattice/directionsearch.h"

#include <optional>
#include <vector>

namespace tessera {

/// A vector whose products with the points of a lattice are whole numbers.
struct LatticeRow {
    Eigen::Vector3d v = Eigen::Vector3d::Zero();  ///< Å
    double dfQuality = 0;                         ///< mean cosine of 2π times the products; 1 at best
};

/// Least squares of a vector against the whole numbers next to its products with the points, of those whose
/// products are near one; what is near gets less from round to round.
/// @return a quality of 0 where fewer than six points are near or do not determine it
LatticeRow refinedRow(const Eigen::Vector3d& v, const LatticePoints& listPoint);

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
