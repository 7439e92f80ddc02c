#include "lattice/latticesharpness.h"

#include "lattice/directionlengths.h"
#include "lattice/latticerows.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr std::size_t g_nClusters = 12;  // the three rows are among the first few
constexpr int g_nTriesEach = 3;          // as the strongest of several neighbours may refine to nothing
// Cosine of 8°, which is several steps between neighbouring directions.
constexpr double g_dfSameCluster = 0.99;
constexpr double g_dfFlattest = 0.2;  // volume of three rows divided by the product of their lengths

/// Strong vectors close to each other, from which one row results.
struct Cluster {
    Eigen::Vector3d direction;
    int nTried = 0;
    LatticeRow best;
};

std::vector<LatticeRow> rowsOfClusters(const std::vector<Eigen::Vector3d>& vecVector,
                                       const LatticePoints& listPoint, const DirectionSearchOptions& options)
{
    std::vector<Cluster> vecCluster;
    for (const Eigen::Vector3d& v : vecVector) {
        const Eigen::Vector3d direction = v.normalized();
        auto it = std::find_if(vecCluster.begin(), vecCluster.end(), [&](const Cluster& cluster) {
            return std::abs(cluster.direction.dot(direction)) > g_dfSameCluster;
        });
        if (it == vecCluster.end()) {
            if (vecCluster.size() == g_nClusters) {
                continue;
            }
            it = vecCluster.insert(it, Cluster{direction, 0, {}});
        }
        if (it->nTried++ < g_nTriesEach) {
            const LatticeRow row = refinedRow(v, listPoint);
            const double dfLength = row.v.norm();
            // A row that was found at the shortest length may become slightly shorter by the refinement.
            const bool bInRange = dfLength >= 0.8 * options.dfShortest && dfLength <= 1.1 * options.dfLongest;
            if (row.dfQuality > it->best.dfQuality && bInRange) {
                it->best = row;
            }
        }
    }
    std::vector<LatticeRow> vecRow;
    for (const Cluster& cluster : vecCluster) {
        if (cluster.best.dfQuality > 0) {
            vecRow.push_back(cluster.best);
        }
    }
    return vecRow;
}

bool areParallel(const Eigen::Vector3d& v, const Eigen::Vector3d& w)
{
    return v.cross(w).norm() < g_dfFlattest * v.norm() * w.norm();
}

bool areFlat(const Eigen::Vector3d& u, const Eigen::Vector3d& v, const Eigen::Vector3d& w)
{
    return std::abs(u.dot(v.cross(w))) < g_dfFlattest * u.norm() * v.norm() * w.norm();
}

/// The sum of the qualities of the best three rows that are not in one plane.
double qualityOfThree(const std::vector<LatticeRow>& vecRow)
{
    std::vector<LatticeRow> vecBest;
    double dfSum = 0;
    for (const LatticeRow& row : vecRow) {
        const bool bParallel = vecBest.size() == 1 && areParallel(vecBest[0].v, row.v);
        const bool bFlat = vecBest.size() == 2 && areFlat(vecBest[0].v, vecBest[1].v, row.v);
        if (vecBest.size() < 3 && !bParallel && !bFlat) {
            vecBest.push_back(row);
            dfSum += row.dfQuality;
        }
    }
    return dfSum;
}

}  // namespace

double shortestClearRow(const LatticePoints& listPoint, const DirectionSearchOptions& options)
{
    Eigen::Matrix3d matSum = Eigen::Matrix3d::Zero();
    for (const Eigen::Vector3d& point : listPoint) {
        matSum += point * point.transpose();
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(matSum, Eigen::EigenvaluesOnly);
    const double dfThickness = std::sqrt(std::max(0.0, solver.eigenvalues()[0]) / double(listPoint.size()));
    // At half the inverse thickness, the transform of a uniform or normal distribution has fallen below a
    // tenth.
    const double dfOutline = std::min(0.5 / dfThickness, options.dfLongest / 3);
    return std::max(options.dfShortest, dfOutline);
}

double latticeSharpness(const LatticePoints& listPoint, const DirectionSearchOptions& options)
{
    double dfReach = 0;
    for (const Eigen::Vector3d& point : listPoint) {
        dfReach = std::max(dfReach, point.norm());
    }
    if (!(dfReach > 0)) {
        return 0;
    }
    DirectionSearchOptions narrowed = options;
    narrowed.dfShortest = shortestClearRow(listPoint, options);
    std::vector<LatticeRow> vecRow = rowsOfClusters(strongestLengths(listPoint, dfReach, narrowed, {}),
                                                    listPoint, narrowed);
    std::stable_sort(vecRow.begin(), vecRow.end(),
                     [](const LatticeRow& a, const LatticeRow& b) { return a.dfQuality > b.dfQuality; });
    return qualityOfThree(vecRow) / 3;
}

}  // namespace tessera
