#include "lattice/rowrefinement.h"

#include "geometry/angles.h"
#include "imaging/sidebyside.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

namespace tessera {

namespace {

constexpr int g_nMostRounds = 15;
constexpr int g_nLeastNear = 6;
constexpr double g_dfSettled = 1e-6;  // Å
constexpr int g_nLanes = 4;
constexpr double g_dfLargestIndex = 1e9;
typedef double DoubleLanes __attribute__((vector_size(8 * g_nLanes)));
typedef int64_t LongLanes __attribute__((vector_size(8 * g_nLanes)));

/// How close to a whole number an index must be in a round.
double nearOfRound(int nRound)
{
    return std::max(0.1, 0.3 - 0.03 * nRound);
}

/// The points in the layout of the loops. The last lanes are filled up with NaN.
struct RowPoints {
    explicit RowPoints(const LatticePoints& list) : listPoint(list)
    {
        const std::size_t nLanes = std::size_t(g_nLanes);
        const std::size_t nSize = (list.size() + nLanes - 1) / nLanes * nLanes;
        for (std::vector<double>* pColumn : {&vecX, &vecY, &vecZ}) {
            pColumn->assign(nSize, std::numeric_limits<double>::quiet_NaN());
        }
        vecProducts.resize(list.size());
        for (std::size_t n = 0; n < list.size(); ++n) {
            const double x = list[n].x(), y = list[n].y(), z = list[n].z();
            vecX[n] = x;
            vecY[n] = y;
            vecZ[n] = z;
            vecProducts[n] = {x, y, z, 0, x * x, x * y, x * z, y * y, y * z, z * z, 0, 0};
            dfReach = std::max(dfReach, list[n].norm());
        }
    }
    const LatticePoints& listPoint;
    std::vector<double> vecX, vecY, vecZ;
    std::vector<std::array<double, 12>>
        vecProducts;     ///< the point, and its products for the normal equations
    double dfReach = 0;  ///< Å⁻¹
};

/// The work space of a thread: the points whose index is close to a whole number, and that number.
struct NearPoints {
    std::vector<std::uint32_t> vecPlace;
    std::vector<double> vecWhole;
};

/// Sums for the normal equations: the whole number times the three coordinates, and the products of the
/// coordinates.
using NormalSums = std::array<double, 12>;

/// Adds up the points one by one, each sum in the order of a plain loop. An index halfway between two whole
/// numbers may be rounded either way here, as it is not close to a whole number.
__attribute__((always_inline)) inline int sumNear(const RowPoints& points, const double* pRow, double dfNear,
                                                  NearPoints& nearPoints, NormalSums& sums)
{
    const double dfWholeOnly = 6755399441055744.0;  // 1.5 · 2⁵²; adding it rounds to a whole number
    std::size_t nNear = 0;
    for (std::size_t n = 0; n < points.vecX.size(); n += g_nLanes) {
        DoubleLanes laneX, laneY, laneZ;
        std::memcpy(&laneX, &points.vecX[n], sizeof(laneX));
        std::memcpy(&laneY, &points.vecY[n], sizeof(laneY));
        std::memcpy(&laneZ, &points.vecZ[n], sizeof(laneZ));
        const DoubleLanes laneIndex = (laneX * pRow[0] + laneY * pRow[1]) + laneZ * pRow[2];
        const DoubleLanes laneWhole = (laneIndex + dfWholeOnly) - dfWholeOnly;
        const DoubleLanes laneOff = laneIndex - laneWhole;
        const LongLanes laneNear = (laneOff < dfNear) & (laneOff > -dfNear);
        for (int i = 0; i < g_nLanes; ++i) {
            nearPoints.vecPlace[nNear] = std::uint32_t(n) + std::uint32_t(i);
            nearPoints.vecWhole[nNear] = laneWhole[i];
            nNear += std::size_t(laneNear[i] & 1);
        }
    }
    DoubleLanes laneRight = {}, laneFirst = {}, laneSecond = {};
    for (std::size_t n = 0; n < nNear; ++n) {
        const double* pProducts = points.vecProducts[nearPoints.vecPlace[n]].data();
        DoubleLanes lanePoint, laneA, laneB;
        std::memcpy(&lanePoint, pProducts, sizeof(lanePoint));
        std::memcpy(&laneA, pProducts + g_nLanes, sizeof(laneA));
        std::memcpy(&laneB, pProducts + 2 * g_nLanes, sizeof(laneB));
        laneRight += lanePoint * nearPoints.vecWhole[n];
        laneFirst += laneA;
        laneSecond += laneB;
    }
    std::memcpy(&sums[0], &laneRight, sizeof(laneRight));
    std::memcpy(&sums[g_nLanes], &laneFirst, sizeof(laneFirst));
    std::memcpy(&sums[2 * g_nLanes], &laneSecond, sizeof(laneSecond));
    return int(nNear);
}

using SumNear = int (*)(const RowPoints&, const double*, double, NearPoints&, NormalSums&);

int sumNearPlain(const RowPoints& points, const double* pRow, double dfNear, NearPoints& nearPoints,
                 NormalSums& sums)
{
    return sumNear(points, pRow, dfNear, nearPoints, sums);
}

#if defined(__x86_64__)
// The same operations in wider registers. Without fused multiply-add the results are the same to the bit.
__attribute__((target("avx2"))) int sumNearWide(const RowPoints& points, const double* pRow, double dfNear,
                                                NearPoints& nearPoints, NormalSums& sums)
{
    return sumNear(points, pRow, dfNear, nearPoints, sums);
}
#endif

SumNear chosenSumNear()
{
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) {
        return sumNearWide;
    }
#endif
    return sumNearPlain;
}

/// The same for indices that are too large for this way of rounding.
int sumNearOfLarge(const RowPoints& points, const Eigen::Vector3d& v, double dfNear, NormalSums& sums)
{
    sums = {};
    int nNear = 0;
    for (std::size_t n = 0; n < points.listPoint.size(); ++n) {
        const double dfIndex = points.listPoint[n].dot(v);
        const double dfWhole = std::round(dfIndex);
        if (std::abs(dfIndex - dfWhole) < dfNear) {
            for (std::size_t i = 0; i < 12; ++i) {
                sums[i] += i < 4 ? dfWhole * points.vecProducts[n][i] : points.vecProducts[n][i];
            }
            ++nNear;
        }
    }
    return nNear;
}

/// Refines rows in one thread.
class CRowWorker {
public:
    explicit CRowWorker(const RowPoints& points) : m_points(points)
    {
        m_near.vecPlace.resize(points.vecX.size() +
                               1);  // the last place is a dummy for points that do not count
        m_near.vecWhole.resize(points.vecX.size() + 1);
    }

    /// Does one round. @return false where the row is not determined
    bool refine(const Eigen::Vector3d& v, int nRound, Eigen::Vector3d& next)
    {
        NormalSums sums;
        const double dfNear = nearOfRound(nRound);
        const bool bSmall = v.norm() * m_points.dfReach < g_dfLargestIndex;  // false for NaN
        const int nNear = bSmall ? m_pSumNear(m_points, v.data(), dfNear, m_near, sums)
                                 : sumNearOfLarge(m_points, v, dfNear, sums);
        Eigen::Matrix3d matNormal;
        matNormal << sums[4], sums[5], sums[6], sums[5], sums[7], sums[8], sums[6], sums[8], sums[9];
        next = matNormal.ldlt().solve(Eigen::Vector3d(sums[0], sums[1], sums[2]));
        return nNear >= g_nLeastNear && next.allFinite();
    }

private:
    const RowPoints& m_points;
    const SumNear m_pSumNear = chosenSumNear();
    NearPoints m_near;
};

double meanCosine(const Eigen::Vector3d& v, const LatticePoints& listPoint)
{
    double dfSum = 0;
    for (const Eigen::Vector3d& point : listPoint) {
        dfSum += std::cos(2 * g_dfPi * point.dot(v));
    }
    return dfSum / double(listPoint.size());
}

/// For each vector the number of the first one that is equal to it. All must be finite.
std::vector<int> firstOfEqual(const std::vector<Eigen::Vector3d>& vecVector)
{
    std::vector<int> vecPlace(vecVector.size());
    for (std::size_t n = 0; n < vecPlace.size(); ++n) {
        vecPlace[n] = int(n);
    }
    const auto at = [&](int n) -> const Eigen::Vector3d& { return vecVector[n]; };
    std::stable_sort(vecPlace.begin(), vecPlace.end(), [&](int a, int b) {
        return std::lexicographical_compare(at(a).begin(), at(a).end(), at(b).begin(), at(b).end());
    });
    std::vector<int> vecFirst(vecVector.size());
    for (std::size_t n = 0; n < vecPlace.size(); ++n) {
        const bool bSame = n > 0 && at(vecPlace[n]) == at(vecPlace[n - 1]);
        vecFirst[std::size_t(vecPlace[n])] = bSame ? vecFirst[std::size_t(vecPlace[n - 1])] : vecPlace[n];
    }
    return vecFirst;
}

/// The rows and their states between the rounds.
class CRowRefinement {
public:
    CRowRefinement(const std::vector<Eigen::Vector3d>& vecVector, const LatticePoints& listPoint, int nJobs,
                   const std::function<bool()>& fnGoOn)
        : m_points(listPoint), m_nJobs(nJobs), m_fnGoOn(fnGoOn), m_vecLike(vecVector.size())
    {
        for (const Eigen::Vector3d& v : vecVector) {
            m_vecRow.push_back({v, 0});
        }
        m_vecState.assign(vecVector.size(), State::Moving);
    }

    bool run()
    {
        for (std::size_t n = 0; n < m_vecRow.size(); ++n) {
            m_vecLike[n] = int(n);
        }
        for (int nRound = 0; nRound < g_nMostRounds; ++nRound) {
            if (!doRound(nRound)) {
                return false;
            }
            joinEqual(State::Moving);
        }
        for (State& state : m_vecState) {
            state = state == State::Moving ? State::Settled : state;
        }
        joinEqual(State::Settled);
        return findQualities();
    }

    std::vector<LatticeRow> rows() const
    {
        std::vector<LatticeRow> vecRow(m_vecRow.size());
        for (std::size_t n = 0; n < vecRow.size(); ++n) {
            std::size_t nLike = n;
            while (m_vecLike[nLike] != int(nLike)) {
                nLike = std::size_t(m_vecLike[nLike]);
            }
            vecRow[n] = m_vecRow[nLike];
        }
        return vecRow;
    }

private:
    enum class State { Moving, Settled, Lost, Joined };

    std::vector<int> placesOf(State state) const
    {
        std::vector<int> vecPlace;
        for (std::size_t n = 0; n < m_vecState.size(); ++n) {
            if (m_vecState[n] == state) {
                vecPlace.push_back(int(n));
            }
        }
        return vecPlace;
    }

    /// Lets only the first one of equal rows of a state go on.
    void joinEqual(State state)
    {
        const std::vector<int> vecPlace = placesOf(state);
        std::vector<Eigen::Vector3d> vecVector;
        vecVector.reserve(vecPlace.size());
        for (const int n : vecPlace) {
            vecVector.push_back(m_vecRow[n].v);
        }
        const std::vector<int> vecFirst = firstOfEqual(vecVector);
        for (std::size_t n = 0; n < vecPlace.size(); ++n) {
            if (vecFirst[n] != int(n)) {
                m_vecLike[std::size_t(vecPlace[n])] = vecPlace[std::size_t(vecFirst[n])];
                m_vecState[std::size_t(vecPlace[n])] = State::Joined;
            }
        }
    }

    bool doRound(int nRound)
    {
        const std::vector<int> vecPlace = placesOf(State::Moving);
        const auto makeWorker = [&]() -> FnPiece {
            const auto pWorker = std::make_shared<CRowWorker>(m_points);
            return [&, pWorker, nRound](int n) {
                const std::size_t nPlace = std::size_t(vecPlace[n]);
                Eigen::Vector3d& v = m_vecRow[nPlace].v;
                Eigen::Vector3d next;
                if (!pWorker->refine(v, nRound, next)) {
                    m_vecState[nPlace] = State::Lost;
                    return;
                }
                if ((next - v).norm() < g_dfSettled) {
                    m_vecState[nPlace] = State::Settled;
                }
                v = next;
            };
        };
        return sideBySide(int(vecPlace.size()), m_nJobs, makeWorker, m_fnGoOn);
    }

    bool findQualities()
    {
        const std::vector<int> vecPlace = placesOf(State::Settled);
        const auto makeWorker = [&]() -> FnPiece {
            return [&](int n) {
                LatticeRow& row = m_vecRow[std::size_t(vecPlace[n])];
                row.dfQuality = meanCosine(row.v, m_points.listPoint);
            };
        };
        return sideBySide(int(vecPlace.size()), m_nJobs, makeWorker, m_fnGoOn);
    }

    const RowPoints m_points;
    const int m_nJobs;
    const std::function<bool()>& m_fnGoOn;
    std::vector<LatticeRow> m_vecRow;
    std::vector<State> m_vecState;
    std::vector<int> m_vecLike;  ///< for a joined row the row that represents it, else the row itself
};

}  // namespace

std::vector<LatticeRow> refinedRows(const std::vector<Eigen::Vector3d>& vecVector,
                                    const LatticePoints& listPoint, int nJobs,
                                    const std::function<bool()>& fnGoOn)
{
    CRowRefinement refinement(vecVector, listPoint, nJobs, fnGoOn);
    return refinement.run() ? refinement.rows() : std::vector<LatticeRow>();
}

LatticeRow refinedRow(const Eigen::Vector3d& v, const LatticePoints& listPoint)
{
    return refinedRows({v}, listPoint, 1)[0];
}

}  // namespace tessera
