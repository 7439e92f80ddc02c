#include "crystals/cellrelation.h"

#include "lattice/cellreduction.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tessera {

namespace {

constexpr int g_nMostTimes = 4;

/// Bases (as rows) of all sublattices of this index of a primitive lattice, each once.
std::vector<Eigen::Matrix3i> sublattices(int nTimes)
{
    std::vector<Eigen::Matrix3i> list;
    for (int a = 1; a <= nTimes; ++a) {
        for (int b = 1; a * b <= nTimes; ++b) {
            const int c = nTimes / (a * b);
            if (a * b * c != nTimes) {
                continue;
            }
            for (int n = 0; n < a * a * b; ++n) {
                Eigen::Matrix3i mat;
                mat << a, 0, 0, n % a, b, 0, n / a % a, n / (a * a), c;
                list.push_back(mat);
            }
        }
    }
    return list;
}

/// The smallest distance of a lattice from the sublattices of this index of another lattice.
double distanceToSublattices(const LatticeBasis& larger, const LatticeBasis& smaller, int nTimes,
                             const CellTolerance& tolerance)
{
    double dfLeast = HUGE_VAL;
    for (const Eigen::Matrix3i& mat : sublattices(nTimes)) {
        const LatticeBasis basis = niggliBasis(mat.cast<double>() * smaller);
        if (!basis.isZero()) {
            dfLeast = std::min(dfLeast, latticeDistance(larger, basis, tolerance));
        }
    }
    return dfLeast;
}

}  // namespace

CellRelation relationBetween(const LatticeBasis& first, const LatticeBasis& second,
                             const CellTolerance& tolerance)
{
    CellRelation best;
    best.dfDistance = HUGE_VAL;
    for (int nTimes = 2; nTimes <= g_nMostTimes; ++nTimes) {
        const double dfLarger = distanceToSublattices(first, second, nTimes, tolerance);
        const double dfSmaller = distanceToSublattices(second, first, nTimes, tolerance);
        const double dfDistance = std::min(dfLarger, dfSmaller);
        if (dfDistance <= 1 && dfDistance < best.dfDistance) {
            best = {nTimes, dfLarger <= dfSmaller, dfDistance};
        }
    }
    return best;
}

QString relationText(const LatticeBasis& crystal, const LatticeBasis& group, const CellTolerance& tolerance)
{
    const CellRelation relation = relationBetween(crystal, group, tolerance);
    if (relation.nTimes > 1) {
        return relation.bLarger
                   ? QStringLiteral(
                         "Its primitive cell is %1 times as large as that of the group: an edge may have "
                         "been taken too long, or a centring missed.")
                         .arg(relation.nTimes)
                   : QStringLiteral(
                         "Its primitive cell has 1/%1 of the volume of that of the group: an edge may have "
                         "been taken too short, or a centring assumed that does not exist.")
                         .arg(relation.nTimes);
    }
    const CellTolerance wide = {5 * tolerance.dfLengths, 5 * tolerance.dfAngles};
    const std::vector<CellSetting> listSetting = settingsBetween(crystal, group, wide);
    if (listSetting.empty()) {
        return QStringLiteral("Its lattice has nothing in common with that of the group.");
    }
    return QStringLiteral(
               "Its lattice differs from that of the group by %1 % in an edge and %2° in an angle.")
        .arg(listSetting.front().dfLengths, 0, 'f', 1)
        .arg(listSetting.front().dfAngles, 0, 'f', 1);
}

}  // namespace tessera
