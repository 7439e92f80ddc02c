// Row refinement: refines vectors of real space against points, many vectors at once.
#pragma once

#include "lattice/latticebasis.h"

#include <functional>
#include <vector>

namespace tessera {

/// A vector whose products with the points of a lattice are whole numbers.
struct LatticeRow {
    Eigen::Vector3d v = Eigen::Vector3d::Zero();  ///< Å
    double dfQuality = 0;                         ///< mean cosine of 2π times the products; at most 1
};

/// Refines a vector by least squares against the whole numbers next to its products with the points. Only
/// points whose products are close to whole numbers are used, and the limit becomes smaller from round to
/// round.
/// @return a quality of 0 where fewer than six points are close or the points do not determine the vector
LatticeRow refinedRow(const Eigen::Vector3d& v, const LatticePoints& listPoint);

/// Does the same for each of the vectors. Vectors that become equal are continued as one.
/// @param nJobs   threads; the result does not depend on it
/// @param fnGoOn  asked now and then, in the calling thread; false ends the work
/// @return empty where fnGoOn has ended it
std::vector<LatticeRow> refinedRows(const std::vector<Eigen::Vector3d>& vecVector,
                                    const LatticePoints& listPoint, int nJobs,
                                    const std::function<bool()>& fnGoOn = {});

}  // namespace tessera
