// Points of reciprocal space whose lattice is known: the reflections of a wedge, as a rotation series sees
// them.
#pragma once

#include "lattice/latticebasis.h"
#include "records/pi.h"

#include <cmath>
#include <functional>
#include <random>

namespace tessera {

class CSimulatedPoints {
public:
    explicit CSimulatedPoints(unsigned nSeed) : m_random(nSeed) {}

    using FnSeen = std::function<double(int h, int k, int l)>;  ///< probability of being seen

    /// Reflections out to a d* in a wedge of ±50° about x, each off by a normal error, Å⁻¹, along each axis.
    LatticePoints reflections(const LatticeBasis& basis, double dfMostDStar, double dfError,
                              const FnSeen& fnSeen)
    {
        LatticePoints listPoint;
        const Eigen::Matrix3d matReciprocal = basis.inverse();
        const Eigen::Vector3d most = dfMostDStar * basis.rowwise().norm();
        for (int h = -int(most.x()); h <= int(most.x()); ++h) {
            for (int k = -int(most.y()); k <= int(most.y()); ++k) {
                for (int l = -int(most.z()); l <= int(most.z()); ++l) {
                    const Eigen::Vector3d point = matReciprocal * Eigen::Vector3d(h, k, l);
                    const double dfDStar = point.norm();
                    if (dfDStar < dfMostDStar && dfDStar > 0.02 &&
                        std::abs(point.z()) < 1.2 * std::abs(point.y()) && uniform() < fnSeen(h, k, l)) {
                        listPoint.push_back(point + dfError * Eigen::Vector3d(normal(), normal(), normal()));
                    }
                }
            }
        }
        return listPoint;
    }

    /// Points evenly spread over a ball.
    LatticePoints noise(int nPoints, double dfMostDStar)
    {
        LatticePoints listPoint;
        while (int(listPoint.size()) < nPoints) {
            const Eigen::Vector3d v(2 * uniform() - 1, 2 * uniform() - 1, 2 * uniform() - 1);
            if (v.norm() < 1 && v.norm() > 0.05) {
                listPoint.push_back(dfMostDStar * v);
            }
        }
        return listPoint;
    }

    Eigen::Matrix3d rotation()
    {
        return Eigen::Quaterniond(normal(), normal(), normal(), normal()).normalized().toRotationMatrix();
    }

    double uniform() { return (double(m_random()) + 0.5) / 4294967296.0; }
    double normal() { return std::sqrt(-2 * std::log(uniform())) * std::cos(2 * g_dfPi * uniform()); }

private:
    std::mt19937 m_random;
};

inline CSimulatedPoints::FnSeen seen(double dfProbability)
{
    return [=](int, int, int) { return dfProbability; };
}

inline LatticePoints joined(LatticePoints first, const LatticePoints& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// Whether two bases describe one lattice, within a share of their edges.
inline bool isOneLattice(const LatticeBasis& a, const LatticeBasis& b, double dfOff = 0.02)
{
    const Eigen::Matrix3d matChange = a * b.inverse();
    const Eigen::Matrix3d matWhole = matChange.array().round();
    return (matChange - matWhole).cwiseAbs().maxCoeff() < dfOff &&
           std::abs(std::abs(matWhole.determinant()) - 1) < 1e-6;
}

}  // namespace tessera
