// Rotations by least squares between vectors that belong together.
#pragma once

#include <Eigen/Dense>

namespace tessera {

/// The rotation, and the scale, that carry vectors onto others with the least squares of what remains.
/// Source: Kabsch (1978), Acta Cryst. A34, 827; Umeyama (1991), IEEE Trans. PAMI 13, 376 (scale).
class CRotationFit {
public:
    void add(const Eigen::Vector3d& from, const Eigen::Vector3d& to)
    {
        m_matSum += to * from.transpose();
        m_dfSquares += from.squaredNorm();
        ++m_nVectors;
    }
    int count() const { return m_nVectors; }
    /// The identity as long as nothing was added.
    Eigen::Matrix3d rotation() const;
    /// Length of the targets over that of the vectors; 1 as long as nothing was added.
    double scale() const;

private:
    Eigen::Matrix3d m_matSum = Eigen::Matrix3d::Zero();
    double m_dfSquares = 0;
    int m_nVectors = 0;
};

/// The rotation that carries the rows of one matrix onto those of the other.
Eigen::Matrix3d rotationBetween(const Eigen::Matrix3d& matFromRows, const Eigen::Matrix3d& matToRows);

}  // namespace tessera
