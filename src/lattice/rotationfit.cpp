#include "lattice/rotationfit.h"

#include <Eigen/SVD>

namespace tessera {

Eigen::Matrix3d CRotationFit::rotation() const
{
    const Eigen::JacobiSVD<Eigen::Matrix3d> svd(m_matSum, Eigen::ComputeFullU | Eigen::ComputeFullV);
    Eigen::Vector3d signs(1, 1, 1);
    if (svd.matrixU().determinant() * svd.matrixV().determinant() < 0) {
        signs.z() = -1;  // else the result would be an improper rotation
    }
    return svd.matrixU() * signs.asDiagonal() * svd.matrixV().transpose();
}

double CRotationFit::scale() const
{
    return m_dfSquares > 0 ? (rotation().transpose() * m_matSum).trace() / m_dfSquares : 1;
}

Eigen::Matrix3d rotationBetween(const Eigen::Matrix3d& matFromRows, const Eigen::Matrix3d& matToRows)
{
    CRotationFit fit;
    for (int n = 0; n < 3; ++n) {
        fit.add(matFromRows.row(n), matToRows.row(n));
    }
    return fit.rotation();
}

}  // namespace tessera
