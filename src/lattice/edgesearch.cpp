#include "lattice/edgesearch.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

/// The greatest product of length and d* for which twelve thousand directions over a hemisphere are enough:
/// the next direction is at most 0.0145 radians away, which changes the product by a fifth.
constexpr double g_dfReach = 14;
constexpr double g_dfMostOff = 0.2;
constexpr double g_dfDirectionsAtSpacing = 12000 * 0.0145 * 0.0145;

struct Edge {
    Eigen::Vector3d vector = Eigen::Vector3d::Zero();
    double dfStrength = 0;
};

/// Directions evenly distributed over a hemisphere, on a spiral of the golden angle.
Eigen::Vector3d directionOfHemisphere(int n, int nDirections)
{
    const double dfZ = (n + 0.5) / nDirections;
    const double dfAngle = g_dfPi * (1 + std::sqrt(5.0)) * (n + 0.5);
    const double dfRadius = std::sqrt(1 - dfZ * dfZ);
    return {dfRadius * std::cos(dfAngle), dfRadius * std::sin(dfAngle), dfZ};
}

double meanCosine(const Eigen::Vector3d& vector, const LatticePoints& listPoint)
{
    double dfSum = 0;
    for (const Eigen::Vector3d& point : listPoint) {
        dfSum += std::cos(2 * g_dfPi * vector.dot(point));
    }
    return dfSum / double(listPoint.size());
}

/// How many of the nearest points are used to judge the directions: those for which the directions are
/// dense enough, but not fewer than are needed for the statistics.
size_t countNear(double dfLength, const LatticePoints& listNearFirst)
{
    const size_t nFewest = 150;
    const auto it = std::partition_point(
        listNearFirst.begin(), listNearFirst.end(),
        [&](const Eigen::Vector3d& point) { return point.norm() * dfLength < g_dfReach; });
    return std::min(std::max(size_t(it - listNearFirst.begin()), nFewest), listNearFirst.size());
}

/// The best of some lengths around the known one, for each direction.
class CDirectionStrengths {
public:
    CDirectionStrengths(double dfLength, double dfTolerance, const LatticePoints& listNearFirst)
    {
        const double dfMostWork = 2.5e7;  // number of products, which take a quarter of a second
        const size_t nNear = countNear(dfLength, listNearFirst);
        const double dfFarthest = listNearFirst[nNear - 1].norm();
        const double dfSpacing = g_dfMostOff / (dfLength * dfFarthest);
        m_nDirections = int(std::clamp(g_dfDirectionsAtSpacing / (dfSpacing * dfSpacing), 3000.0, 60000.0));
        const size_t nStep = size_t(double(nNear) * m_nDirections / dfMostWork) + 1;
        m_matPoints.resize(3, Eigen::Index((nNear + nStep - 1) / nStep));
        for (Eigen::Index n = 0; n < m_matPoints.cols(); ++n) {
            m_matPoints.col(n) = listNearFirst[size_t(n) * nStep].cast<float>();
        }
        m_nBins = int(dfFarthest * dfLength * g_nBinsAPeriod) + 2;
        m_dfBinsAUnit = dfLength * g_nBinsAPeriod;
        const int nSteps = int(std::ceil(dfTolerance * dfFarthest * dfLength / g_dfMostOff));
        const int nLimited = std::min(nSteps, g_nMostSteps);
        for (int n = -nLimited; n <= nLimited; ++n) {
            m_listLength.push_back(dfLength * (1 + (nLimited == 0 ? 0 : dfTolerance * n / nLimited)));
        }
        m_matCosines.resize(Eigen::Index(m_listLength.size()), m_nBins);
        for (size_t i = 0; i < m_listLength.size(); ++i) {
            for (int n = 0; n < m_nBins; ++n) {
                m_matCosines(Eigen::Index(i),
                             n) = float(std::cos(2 * g_dfPi * m_listLength[i] * (n + 0.5) / m_dfBinsAUnit));
            }
        }
    }

    std::vector<Edge> edges() const
    {
        std::vector<Edge> listEdge(m_nDirections, Edge{});
        Eigen::VectorXf histogram(m_nBins);
        for (int n = 0; n < m_nDirections; ++n) {
            const Eigen::Vector3d direction = directionOfHemisphere(n, m_nDirections);
            const Eigen::RowVector3f scaled = (direction * m_dfBinsAUnit).cast<float>().transpose();
            histogram.setZero();
            for (Eigen::Index i = 0; i < m_matPoints.cols(); ++i) {
                const float fPlace = scaled[0] * m_matPoints(0, i) + scaled[1] * m_matPoints(1, i) +
                                     scaled[2] * m_matPoints(2, i);
                histogram[std::min(int(std::abs(fPlace)), m_nBins - 1)] += 1;
            }
            const Eigen::VectorXf strengths = m_matCosines * histogram;
            Eigen::Index nBest = 0;
            listEdge[n].dfStrength = double(strengths.maxCoeff(&nBest));
            listEdge[n].vector = direction * m_listLength[nBest];
        }
        return listEdge;
    }

private:
    static constexpr int g_nBinsAPeriod = 12;
    static constexpr int g_nMostSteps = 10;

    int m_nDirections = 0;
    int m_nBins = 0;
    double m_dfBinsAUnit = 1;  // bins per Å⁻¹
    std::vector<double> m_listLength;
    Eigen::Matrix<float, 3, Eigen::Dynamic> m_matPoints;
    Eigen::MatrixXf m_matCosines;
};

bool isTheSame(const Eigen::Vector3d& v, const Eigen::Vector3d& w, double dfShare)
{
    const double dfLimit = dfShare * v.norm();
    return (v - w).norm() < dfLimit || (v + w).norm() < dfLimit;
}

/// Refines an edge by least squares against the whole numbers next to its products with the points, the
/// nearest points first.
void refineEdge(Edge& edge, const LatticePoints& listNearFirst, size_t nNear)
{
    const int nRounds = 2;
    for (size_t nPoints = std::min(nNear, listNearFirst.size());;
         nPoints = std::min(2 * nPoints, listNearFirst.size())) {
        for (int nRound = 0; nRound < nRounds; ++nRound) {
            Eigen::Matrix3d matNormal = Eigen::Matrix3d::Zero();
            Eigen::Vector3d right = Eigen::Vector3d::Zero();
            for (size_t n = 0; n < nPoints; ++n) {
                const Eigen::Vector3d& point = listNearFirst[n];
                const double dfProduct = edge.vector.dot(point);
                const double dfWhole = std::round(dfProduct);
                if (std::abs(dfProduct - dfWhole) < 0.25) {
                    matNormal += point * point.transpose();
                    right += dfWhole * point;
                }
            }
            const Eigen::Vector3d next = matNormal.ldlt().solve(right);
            // Points in a plane leave one direction undetermined. Then the edge stays as it was found.
            if (!next.allFinite() || !isTheSame(edge.vector, next, 0.3)) {
                break;
            }
            edge.vector = next;
        }
        if (nPoints == listNearFirst.size()) {
            break;
        }
    }
    edge.dfStrength = meanCosine(edge.vector, listNearFirst);
}

/// The strongest edges that differ, the strongest first.
std::vector<Edge> distinctEdges(std::vector<Edge> listEdge, double dfShare, size_t nMost)
{
    std::stable_sort(listEdge.begin(), listEdge.end(),
                     [](const Edge& a, const Edge& b) { return a.dfStrength > b.dfStrength; });
    std::vector<Edge> listDistinct;
    for (const Edge& edge : listEdge) {
        if (listDistinct.size() == nMost) {
            break;
        }
        if (std::none_of(listDistinct.begin(), listDistinct.end(), [&](const Edge& former) {
                return isTheSame(former.vector, edge.vector, dfShare);
            })) {
            listDistinct.push_back(edge);
        }
    }
    return listDistinct;
}

}  // namespace

LatticePoints thinnedNearFirst(const LatticePoints& listPoint, size_t nMost)
{
    LatticePoints listUsed;
    const size_t nStep = (listPoint.size() + nMost - 1) / std::max(nMost, size_t(1));
    for (size_t n = 0; n < listPoint.size(); n += std::max(nStep, size_t(1))) {
        const double dfSquare = listPoint[n].squaredNorm();
        if (std::isfinite(dfSquare) && dfSquare > 1e-12 && dfSquare < 1e4) {
            listUsed.push_back(listPoint[n]);
        }
    }
    std::stable_sort(
        listUsed.begin(), listUsed.end(),
        [](const Eigen::Vector3d& a, const Eigen::Vector3d& b) { return a.squaredNorm() < b.squaredNorm(); });
    return listUsed;
}

std::vector<Eigen::Vector3d> findEdges(double dfLength, double dfTolerance,
                                       const LatticePoints& listNearFirst)
{
    const size_t nMostRefined = 80;
    const size_t nMostKept = 30;
    std::vector<Eigen::Vector3d> listFound;
    if (listNearFirst.empty()) {
        return listFound;
    }
    const size_t nNear = countNear(dfLength, listNearFirst);
    const double dfApart = std::min(g_dfMostOff / (dfLength * listNearFirst[nNear - 1].norm()),
                                    0.3);  // share of the width of one maximum
    std::vector<Edge> listEdge = distinctEdges(
        CDirectionStrengths(dfLength, dfTolerance, listNearFirst).edges(), 2 * dfApart, nMostRefined);
    for (Edge& edge : listEdge) {
        refineEdge(edge, listNearFirst, nNear);
    }
    for (const Edge& edge : distinctEdges(std::move(listEdge), 0.02, nMostRefined)) {
        if (std::abs(edge.vector.norm() / dfLength - 1) < dfTolerance && listFound.size() < nMostKept) {
            listFound.push_back(edge.vector);
        }
    }
    return listFound;
}

}  // namespace tessera
