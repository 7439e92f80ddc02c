// CRotationFit: the rotation between two sets of vectors by least squares.
#pragma once

#include <Eigen/Dense>

namespace tessera {

/// Finds the rotation and the scale that take one set of vectors to the other with the least sum of squared
/// residuals.
/// Source: Kabsch (1978), Acta Cryst. A34, 827; Umeyama (1991), IEEE Trans. PAMI 13, 376 (scale).
class CRotationFit {
public:
    /// Adds a pair of vectors that correspond to each other.
    void add(const Eigen::Vector3d& from, const Eigen::Vector3d& to)
    {
        m_matSum += to * from.transpose();
        m_dfSquares += from.squaredNorm();
        ++m_nVectors;
    }
    /// The number of pairs.
    int count() const { return m_nVectors; }
    /// The rotation; the identity if no pair was added.
    Eigen::Matrix3d rotation() const;
    /// The ratio of the lengths of the target vectors to those of the others; 1 if no pair was added.
    double scale() const;

private:
    Eigen::Matrix3d m_matSum = Eigen::Matrix3d::Zero();
    double m_dfSquares = 0;
    int m_nVectors = 0;
};

/// The rotation that takes the rows of one matrix to those of the other.
Eigen::Matrix3d rotationBetween(const Eigen::Matrix3d& matFromRows, const Eigen::Matrix3d& matToRows);

}  // namespace tessera
