#include "lattice/latticefit.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace tessera {

namespace {

int countFitting(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance)
{
    return int(std::count_if(listPoint.begin(), listPoint.end(), [&](const Eigen::Vector3d& point) {
        return distanceFromWhole(basis, point) < dfTolerance;
    }));
}

/// A random orientation out of a uniform distribution, by four normal numbers as a quaternion: Marsaglia
/// (1972), Ann. Math. Stat. 43, 645. The normal numbers are computed here from uniform ones, as standard
/// libraries differ in theirs.
Eigen::Matrix3d someOrientation(std::mt19937& random)
{
    const auto uniform = [&] { return (double(random()) + 0.5) / 4294967296.0; };
    const auto normalPair = [&] {
        const double dfRadius = std::sqrt(-2 * std::log(uniform()));
        const double dfAngle = 2 * g_dfPi * uniform();
        return Eigen::Vector2d(dfRadius * std::cos(dfAngle), dfRadius * std::sin(dfAngle));
    };
    const Eigen::Vector2d v = normalPair();
    const Eigen::Vector2d w = normalPair();
    return Eigen::Quaterniond(v.x(), v.y(), w.x(), w.y()).normalized().toRotationMatrix();
}

}  // namespace

LatticeFit fitOfLattice(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance)
{
    const int nOrientations = 40;
    LatticeFit fit;
    fit.nPoints = int(listPoint.size());
    fit.nFitting = countFitting(basis, listPoint, dfTolerance);
    if (listPoint.empty()) {
        return fit;
    }
    std::mt19937 random(1);  // fixed, so that equal runs give equal results
    double dfSum = 0;
    for (int n = 0; n < nOrientations; ++n) {
        dfSum += countFitting(basis * someOrientation(random), listPoint, dfTolerance);
    }
    fit.dfByChance = dfSum / nOrientations / fit.nPoints;
    return fit;
}

}  // namespace tessera
