#include "lattice/latticebasis.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

Vec3D toVec3D(const Eigen::Vector3d& v)
{
    return {float(v.x()), float(v.y()), float(v.z())};
}

Eigen::Vector3d toVector(const Vec3D& v)
{
    return {double(v.x), double(v.y), double(v.z)};
}

double angleBetween(const Eigen::Vector3d& v, const Eigen::Vector3d& w)
{
    return degrees(std::atan2(v.cross(w).norm(), v.dot(w)));
}

void sortByLength(LatticeBasis& basis)
{
    std::array<Eigen::Vector3d, 3> aRow = {basis.row(0), basis.row(1), basis.row(2)};
    std::stable_sort(aRow.begin(), aRow.end(), [](const Eigen::Vector3d& v, const Eigen::Vector3d& w) {
        return v.squaredNorm() < w.squaredNorm();
    });
    for (int n = 0; n < 3; ++n) {
        basis.row(n) = aRow[n];
    }
}

/// Subtracts multiples of the first two rows from the third where that makes it shorter.
bool shortenThird(LatticeBasis& basis)
{
    const Eigen::RowVector3d third = basis.row(2);
    bool bShorter = false;
    for (int m = -1; m <= 1; ++m) {
        for (int n = -1; n <= 1; ++n) {
            const Eigen::RowVector3d v = third + m * basis.row(0) + n * basis.row(1);
            if (v.squaredNorm() < basis.row(2).squaredNorm() * (1 - 1e-9)) {
                basis.row(2) = v;
                bShorter = true;
            }
        }
    }
    return bShorter;
}

bool shortenSecond(LatticeBasis& basis)
{
    const double dfMultiple = std::round(basis.row(1).dot(basis.row(0)) / basis.row(0).squaredNorm());
    const Eigen::RowVector3d v = basis.row(1) - dfMultiple * basis.row(0);
    if (v.squaredNorm() < basis.row(1).squaredNorm() * (1 - 1e-9)) {
        basis.row(1) = v;
        return true;
    }
    return false;
}

}  // namespace

LatticeBasis latticeBasisOf(const ReciprocalBasis& basis)
{
    Eigen::Matrix3d matColumns;  // a*, b*, c*
    matColumns << toVector(basis.a), toVector(basis.b), toVector(basis.c);
    return matColumns.inverse();
}

ReciprocalBasis reciprocalBasisOf(const LatticeBasis& basis)
{
    const Eigen::Matrix3d matColumns = basis.inverse();
    return {toVec3D(matColumns.col(0)), toVec3D(matColumns.col(1)), toVec3D(matColumns.col(2))};
}

CellParameters cellOf(const LatticeBasis& basis)
{
    const Eigen::Vector3d a = basis.row(0);
    const Eigen::Vector3d b = basis.row(1);
    const Eigen::Vector3d c = basis.row(2);
    return {a.norm(), b.norm(), c.norm(), angleBetween(b, c), angleBetween(a, c), angleBetween(a, b)};
}

LatticeBasis shortestBasis(LatticeBasis basis)
{
    const int nMostRounds = 200;  // each round makes a vector shorter; far more than any lattice needs
    for (int n = 0; n < nMostRounds && basis.allFinite(); ++n) {
        sortByLength(basis);
        if (!shortenSecond(basis) && !shortenThird(basis)) {
            break;
        }
    }
    return basis.determinant() < 0 ? LatticeBasis(-basis) : basis;
}

double distanceFromWhole(const LatticeBasis& basis, const Eigen::Vector3d& point)
{
    const Eigen::Vector3d index = basis * point;
    return (index - index.array().round().matrix()).cwiseAbs().maxCoeff();
}

LatticeBasis refinedBasis(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance)
{
    const int nMostRounds = 30;
    LatticeBasis refined = basis;
    for (int nRound = 0; nRound < nMostRounds; ++nRound) {
        Eigen::Matrix3d matNormal = Eigen::Matrix3d::Zero();
        Eigen::Matrix3d matRight = Eigen::Matrix3d::Zero();
        for (const Eigen::Vector3d& point : listPoint) {
            const Eigen::Vector3d index = refined * point;
            const Eigen::Vector3d whole = index.array().round();
            if ((index - whole).cwiseAbs().maxCoeff() < dfTolerance) {
                matNormal += point * point.transpose();
                matRight += point * whole.transpose();
            }
        }
        const LatticeBasis next = matNormal.ldlt().solve(matRight).transpose();
        if (!next.allFinite() || std::abs(next.determinant()) < std::abs(basis.determinant()) / 2) {
            return basis;
        }
        const double dfChange = (next - refined).norm();
        refined = next;
        if (dfChange < 1e-7 * refined.norm()) {
            break;
        }
    }
    return refined;
}

}  // namespace tessera
