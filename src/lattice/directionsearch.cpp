#include "lattice/directionsearch.h"

#include "lattice/directionlengths.h"
#include "lattice/latticerows.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr std::size_t g_nLeastPoints = 10;
constexpr std::size_t g_nMostPoints = 8000;  // sample for the search; more points do not improve the vectors
constexpr double g_dfFarthest = 20;          // Å⁻¹; crystals do not scatter to spacings of 0.05 Å

LatticePoints usablePoints(const LatticePoints& listPoint)
{
    LatticePoints listUsable;
    listUsable.reserve(listPoint.size());
    for (const Eigen::Vector3d& point : listPoint) {
        const double dfLength = point.norm();
        if (dfLength > 0 && dfLength <= g_dfFarthest) {  // false for NaN
            listUsable.push_back(point);
        }
    }
    return listUsable;
}

LatticePoints thinned(const LatticePoints& listPoint)
{
    if (listPoint.size() <= g_nMostPoints) {
        return listPoint;
    }
    LatticePoints listFew;
    listFew.reserve(g_nMostPoints);
    for (std::size_t n = 0; n < g_nMostPoints; ++n) {
        listFew.push_back(listPoint[n * listPoint.size() / g_nMostPoints]);
    }
    return listFew;
}

/// Whether the points are so close to a plane through the origin, by root mean square, that even the index
/// of the longest edge across it would be 0 for most of them. Then nothing is known of that edge.
bool lieInOnePlane(const LatticePoints& listPoint, double dfLongest)
{
    Eigen::Matrix3d matSum = Eigen::Matrix3d::Zero();
    for (const Eigen::Vector3d& point : listPoint) {
        matSum += point * point.transpose();
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(matSum, Eigen::EigenvaluesOnly);
    const double dfThickness = std::sqrt(std::max(0.0, solver.eigenvalues()[0]) / double(listPoint.size()));
    return dfThickness < 0.25 / dfLongest;
}

/// The number of points that fit; 0 where their indices are in one plane, as the third edge is then
/// arbitrary.
int countSpatial(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance)
{
    int nFitting = 0;
    Eigen::Matrix3d matSum = Eigen::Matrix3d::Zero();
    for (const Eigen::Vector3d& point : listPoint) {
        if (distanceFromWhole(basis, point) < dfTolerance) {
            const Eigen::Vector3d whole = (basis * point).array().round();
            matSum += whole * whole.transpose();
            ++nFitting;
        }
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(matSum, Eigen::EigenvaluesOnly);
    return solver.eigenvalues()[0] > 0.5 ? nFitting : 0;  // the sums are whole numbers, and 0 for a plane
}

}  // namespace

std::optional<DirectionLattice> searchDirections(const LatticePoints& listPoint,
                                                 const DirectionSearchOptions& options,
                                                 const std::function<bool()>& fnGoOn)
{
    const LatticePoints listUsable = usablePoints(listPoint);
    const bool bRange = options.dfLongest > 0 && std::isfinite(options.dfLongest);
    if (listUsable.size() < g_nLeastPoints || !bRange || lieInOnePlane(listUsable, options.dfLongest)) {
        return std::nullopt;
    }
    double dfReach = 0;
    for (const Eigen::Vector3d& point : listUsable) {
        dfReach = std::max(dfReach, point.norm());
    }
    const LatticePoints listFew = thinned(listUsable);
    const std::vector<Eigen::Vector3d> vecVector = strongestLengths(listFew, dfReach, options, fnGoOn);
    const std::vector<LatticeRow> vecRow = bestRows(vecVector, listFew, shortestLength(options, dfReach),
                                                    options, fnGoOn);
    const std::optional<LatticeBasis> triple = bestTriple(vecRow, listFew, options.dfTolerance);
    if (!triple) {
        return std::nullopt;
    }
    DirectionLattice found;
    found.matBasis = shortestBasis(refinedBasis(shortestBasis(*triple), listUsable, options.dfTolerance));
    found.nFitting = countSpatial(found.matBasis, listUsable, options.dfTolerance);
    found.dfVolume = found.matBasis.determinant();
    if (found.nFitting < int(g_nLeastPoints)) {
        return std::nullopt;
    }
    return found;
}

}  // namespace tessera
