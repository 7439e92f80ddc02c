#include "lattice/cellreduction.h"

// No other source may include this header. One of its functions is not inline, and two definitions would
// not link.
#include <gemmi/cellred.hpp>

#include <cmath>

namespace tessera {

namespace {

/// The volume of a cell divided by the product of its edges.
double boxShare(const LatticeBasis& basis)
{
    return std::abs(basis.determinant()) / (basis.row(0).norm() * basis.row(1).norm() * basis.row(2).norm());
}

bool spansCell(const LatticeBasis& basis)
{
    const double dfLongest = 1e5;  // Å
    const double dfFlat = 1e-6;    // co-planar vectors in single precision are flatter than this
    return basis.allFinite() && basis.rowwise().norm().maxCoeff() <= dfLongest && boxShare(basis) > dfFlat;
}

}  // namespace

LatticeBasis niggliBasis(const LatticeBasis& basis)
{
    const double dfShortest = 0.1;  // Å
    const double dfSkewed = 0.3;    // reduced cells have more than 1/2
    if (!spansCell(basis)) {
        return LatticeBasis::Zero();
    }
    const LatticeBasis shortest = shortestBasis(basis);
    if (shortest.rowwise().norm().minCoeff() < dfShortest || boxShare(shortest) < dfSkewed) {
        return LatticeBasis::Zero();
    }
    const Eigen::Matrix3d metric = shortest * shortest.transpose();
    gemmi::GruberVector reduction(std::array<double, 6>{
        metric(0, 0), metric(1, 1), metric(2, 2), 2 * metric(1, 2), 2 * metric(0, 2), 2 * metric(0, 1)});
    reduction.set_change_of_basis(gemmi::Op{gemmi::Op::identity().rot, {0, 0, 0}});
    reduction.niggli_reduce(1e-6 * metric(0, 0));  // the rounding error of a basis in single precision
    Eigen::Matrix3d matChange;                     // its columns are the new vectors
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int nColumn = 0; nColumn < 3; ++nColumn) {
            matChange(nRow, nColumn) = double(reduction.change_of_basis->rot[nRow][nColumn]) / gemmi::Op::DEN;
        }
    }
    const LatticeBasis reduced = matChange.transpose() * shortest;
    return reduced.determinant() < 0 ? LatticeBasis(-reduced) : reduced;
}

}  // namespace tessera
