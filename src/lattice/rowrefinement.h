// Row refinement: vectors of real space brought onto points, many of them against the same ones.
#pragma once

#include "lattice/latticebasis.h"

#include <functional>
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

/// refinedRow() of each of the vectors. Vectors that come to be equal on the way go on as one.
/// @param nJobs   threads; the rows are the same for every number
/// @param fnGoOn  asked now and then, in the calling thread; false ends the work
/// @return empty where it was ended
std::vector<LatticeRow> refinedRows(const std::vector<Eigen::Vector3d>& vecVector,
                                    const LatticePoints& listPoint, int nJobs,
                                    const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
