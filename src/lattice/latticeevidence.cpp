#include "lattice/latticeevidence.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace tessera {

double evidenceOf(const LatticeFit& fit)
{
    const double dfShare = fit.share();
    const double dfByChance = std::max(fit.dfByChance, 1e-6);
    if (fit.nPoints <= 0 || !(dfShare > dfByChance)) {
        return 0;
    }
    const double dfRest = dfShare < 1 ? (1 - dfShare) * std::log((1 - dfShare) / (1 - dfByChance)) : 0;
    return fit.nPoints * (dfShare * std::log(dfShare / dfByChance) + dfRest);
}

double evidenceOf(const LatticeFit& fit, const LatticeBasis& basis, const LatticePoints& listPoint,
                  double dfTolerance)
{
    std::vector<std::array<double, 3>> listReflection;
    for (const Eigen::Vector3d& point : listPoint) {
        if (distanceFromWhole(basis, point) < dfTolerance) {
            const Eigen::Vector3d whole = (basis * point).array().round();
            listReflection.push_back({whole.x(), whole.y(), whole.z()});
        }
    }
    if (listReflection.empty()) {
        return 0;
    }
    std::sort(listReflection.begin(), listReflection.end());
    const auto itEnd = std::unique(listReflection.begin(), listReflection.end());
    return evidenceOf(fit) * double(itEnd - listReflection.begin()) / double(listReflection.size());
}

int dimensionsOfFit(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance)
{
    const double dfLeastExtent = 1.0 / 50;
    Eigen::Matrix3d matSquares = Eigen::Matrix3d::Zero();
    for (const Eigen::Vector3d& point : listPoint) {
        if (distanceFromWhole(basis, point) < dfTolerance) {
            matSquares += point * point.transpose();
        }
    }
    const Eigen::Vector3d squares =
        Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>(matSquares, Eigen::EigenvaluesOnly).eigenvalues();
    const double dfLimit = dfLeastExtent * dfLeastExtent * squares.maxCoeff();
    return dfLimit > 0 ? int((squares.array() > dfLimit).count()) : 0;
}

}  // namespace tessera
