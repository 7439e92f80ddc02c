#include "lattice/latticerows.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tessera {

namespace {

constexpr int g_nRefined = 400;  // vectors; many of them are around each row, so that no row is missed
constexpr int g_nRows = 30;      // best rows, which make 4060 triples
constexpr double g_dfLeastQuality = 0.2;  // the quality is some hundredths for points without a lattice
constexpr double g_dfFlattest = 0.2;      // volume of a triple divided by the product of its edges
constexpr int g_nLeastPoints = 10;

/// Whether two rows are nearly equal up to the sign.
bool isSameRow(const Eigen::Vector3d& v, const Eigen::Vector3d& w)
{
    return std::min((v - w).norm(), (v + w).norm()) < 0.03 * v.norm();
}

/// A bit for each point, which is set where the product with the row is close to a whole number.
using PointBits = std::vector<std::uint64_t>;

PointBits bitsOf(const Eigen::Vector3d& v, const LatticePoints& listPoint, double dfTolerance)
{
    PointBits vecBits((listPoint.size() + 63) / 64, 0);
    for (std::size_t n = 0; n < listPoint.size(); ++n) {
        const double dfIndex = listPoint[n].dot(v);
        if (std::abs(dfIndex - std::round(dfIndex)) < dfTolerance) {
            vecBits[n / 64] |= std::uint64_t(1) << (n % 64);
        }
    }
    return vecBits;
}

int countOfAll(const PointBits& a, const PointBits& b, const PointBits& c)
{
    std::size_t nCount = 0;
    for (std::size_t n = 0; n < a.size(); ++n) {
        nCount += std::bitset<64>(a[n] & b[n] & c[n]).count();
    }
    return int(nCount);
}

struct Triple {
    LatticeBasis basis;
    double dfVolume = 0;
    int nFitting = 0;
};

std::vector<Triple> triplesOf(const std::vector<LatticeRow>& vecRow, const LatticePoints& listPoint,
                              double dfTolerance)
{
    std::vector<PointBits> vecBits;
    vecBits.reserve(vecRow.size());
    for (const LatticeRow& row : vecRow) {
        vecBits.push_back(bitsOf(row.v, listPoint, dfTolerance));
    }
    std::vector<Triple> vecTriple;
    for (std::size_t i = 0; i < vecRow.size(); ++i) {
        for (std::size_t j = i + 1; j < vecRow.size(); ++j) {
            for (std::size_t k = j + 1; k < vecRow.size(); ++k) {
                Triple triple;
                triple.basis << vecRow[i].v.transpose(), vecRow[j].v.transpose(), vecRow[k].v.transpose();
                triple.dfVolume = std::abs(triple.basis.determinant());
                if (triple.dfVolume >= g_dfFlattest * triple.basis.rowwise().norm().prod()) {
                    triple.nFitting = countOfAll(vecBits[i], vecBits[j], vecBits[k]);
                    vecTriple.push_back(triple);
                }
            }
        }
    }
    return vecTriple;
}

}  // namespace

std::vector<LatticeRow> bestRows(const std::vector<Eigen::Vector3d>& vecVector,
                                 const LatticePoints& listPoint, double dfShortest,
                                 const DirectionSearchOptions& options, const std::function<bool()>& fnGoOn)
{
    const std::size_t nRefined = std::min(vecVector.size(), std::size_t(g_nRefined));
    const std::vector<LatticeRow> vecRefined = refinedRows(
        {vecVector.begin(), vecVector.begin() + std::ptrdiff_t(nRefined)}, listPoint, options.nJobs, fnGoOn);
    std::vector<LatticeRow> vecKept;
    for (const LatticeRow& row : vecRefined) {
        const double dfLength = row.v.norm();
        const bool bGood = row.dfQuality >= g_dfLeastQuality && dfLength >= dfShortest &&
                           dfLength <= 1.1 * options.dfLongest;
        const auto isSame = [&](const LatticeRow& kept) { return isSameRow(row.v, kept.v); };
        if (bGood && std::none_of(vecKept.begin(), vecKept.end(), isSame)) {
            vecKept.push_back(row);
        }
    }
    std::stable_sort(vecKept.begin(), vecKept.end(),
                     [](const LatticeRow& a, const LatticeRow& b) { return a.dfQuality > b.dfQuality; });
    vecKept.resize(std::min(vecKept.size(), std::size_t(g_nRows)));
    return vecKept;
}

std::optional<LatticeBasis> bestTriple(const std::vector<LatticeRow>& vecRow, const LatticePoints& listPoint,
                                       double dfTolerance)
{
    const std::vector<Triple> vecTriple = triplesOf(vecRow, listPoint, dfTolerance);
    int nBest = 0;
    for (const Triple& triple : vecTriple) {
        nBest = std::max(nBest, triple.nFitting);
    }
    if (nBest < g_nLeastPoints) {
        return std::nullopt;
    }
    // The more points a reciprocal lattice has, the more of them fit by chance. So a supercell may have the
    // most fitting points, but only a few more than the true cell.
    const Triple* pSmallest = nullptr;
    for (const Triple& triple : vecTriple) {
        const bool bEnough = 10LL * triple.nFitting >= 9LL * nBest;
        if (bEnough && (pSmallest == nullptr || triple.dfVolume < pSmallest->dfVolume)) {
            pSmallest = &triple;
        }
    }
    return pSmallest->basis;
}

}  // namespace tessera
