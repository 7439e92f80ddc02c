#include "lattice/cosets.h"

#include "lattice/latticefit.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tessera {

namespace {

constexpr int g_nMostDenominator = 5;
/// A reflection is found on several frames in succession, so numbers of points scatter more than a Poisson
/// distribution. Six of its standard deviations are about three true ones.
constexpr double g_dfStandardDeviations = 6;

/// The half width of the window of a coset. It is at most a third of the distance to the next coset, so
/// that its surroundings do not touch that one.
double windowOf(int nDenominator, double dfTolerance)
{
    return std::min(dfTolerance, 1.0 / (3 * nDenominator));
}

double distanceFromLattice(const Eigen::Vector3d& index)
{
    return (index - index.array().round().matrix()).cwiseAbs().maxCoeff();
}

/// The ways to divide the points into an inner and an outer half: by d*, and by the magnitude of each
/// index.
struct Halves {
    static constexpr int count = 4;
    std::array<double, count> aMedian = {};

    static std::array<double, count> places(const LatticeBasis& reciprocal, const Eigen::Vector3d& index)
    {
        return {(reciprocal * index).norm(), std::abs(index.x()), std::abs(index.y()), std::abs(index.z())};
    }
};

double medianOf(std::vector<double>& list)
{
    if (list.empty()) {
        return 0;
    }
    const auto itMiddle = list.begin() + std::ptrdiff_t(list.size() / 2);
    std::nth_element(list.begin(), itMiddle, list.end());
    return *itMiddle;
}

/// The points of one coset: all, and those in the inner half of each division.
struct Tally {
    CosetWindow all;
    std::array<CosetWindow, Halves::count> aInner;
};

/// The points on the lattice and between, with the limits of the halves.
struct Division {
    LatticeBasis reciprocal;  // columns a*, b*, c*
    Halves halves;
    int nFitting = 0;
    std::array<int, Halves::count> aFittingInner = {};
    std::array<int, Halves::count> aLeftInner = {};
    std::vector<Eigen::Vector3d> listLeft;
    std::vector<std::array<bool, Halves::count>> listLeftIsInner;

    std::array<bool, Halves::count> inner(const Eigen::Vector3d& index) const
    {
        const auto aPlace = Halves::places(reciprocal, index);
        std::array<bool, Halves::count> aInner = {};
        for (size_t n = 0; n < Halves::count; ++n) {
            aInner[n] = aPlace[n] < halves.aMedian[n];
        }
        return aInner;
    }
};

Division dividePoints(const LatticeBasis& basis, const std::vector<Eigen::Vector3d>& listIndex,
                      double dfTolerance)
{
    Division division;
    division.reciprocal = basis.inverse();
    std::array<std::vector<double>, Halves::count> aPlaces;
    for (const Eigen::Vector3d& index : listIndex) {
        if (distanceFromLattice(index) < dfTolerance) {
            const auto aPlace = Halves::places(division.reciprocal, index);
            for (size_t n = 0; n < Halves::count; ++n) {
                aPlaces[n].push_back(aPlace[n]);
            }
        }
    }
    for (size_t n = 0; n < Halves::count; ++n) {
        division.halves.aMedian[n] = medianOf(aPlaces[n]);
    }
    for (const Eigen::Vector3d& index : listIndex) {
        const bool bFits = distanceFromLattice(index) < dfTolerance;
        const auto aInner = division.inner(index);
        for (size_t n = 0; n < Halves::count; ++n) {
            (bFits ? division.aFittingInner : division.aLeftInner)[n] += aInner[n] ? 1 : 0;
        }
        if (bFits) {
            ++division.nFitting;
        } else {
            division.listLeft.push_back(index);
            division.listLeftIsInner.push_back(aInner);
        }
    }
    return division;
}

std::vector<Tally> tallyCosets(const CCosetTable& table, const Division& division, double dfWindow)
{
    std::vector<Tally> listTally(table.firsts().size());
    for (size_t i = 0; i < division.listLeft.size(); ++i) {
        const auto [anNumerator, off] = nextCoset(division.listLeft[i], table.denominator());
        const int nCoset = table.cosetOf(anNumerator);
        if (nCoset < 0 || off.cwiseAbs().maxCoeff() >= g_dfReachOfSurroundings * dfWindow) {
            continue;
        }
        Tally& tally = listTally[nCoset];
        tally.all.add(off, dfWindow);
        for (size_t n = 0; n < Halves::count; ++n) {
            if (division.listLeftIsInner[i][n]) {
                tally.aInner[n].add(off, dfWindow);
            }
        }
    }
    return listTally;
}

double deviations(int nPoints, double dfByChance)
{
    return (nPoints - dfByChance) / std::sqrt(std::max(dfByChance, 1.0));
}

/// Whether the coset has its points also where an error of the geometry would not have reached it: in the
/// half of the points next to the origin, and in the lower half of each index.
/// @param dfEven  share of the points off the lattice that an even distribution puts into the coset
bool isInInnerHalves(const Tally& tally, const Division& division, double dfEven)
{
    const double dfLeastDeviations = 2.5;  // for each half; all four must reach it
    // In each inner half, the coset must have at least a third as many points per point of the lattice as
    // in all. An error that grows with the index reaches nothing in the inner half, while reflections of a
    // superlattice are distributed like the others.
    const double dfLeastRatio = 1.0 / 3;
    const double dfByChance = std::max(dfEven * double(division.listLeft.size()), tally.all.byChance());
    const double dfShare = (tally.all.nInside - dfByChance) / std::max(division.nFitting, 1);
    for (size_t n = 0; n < Halves::count; ++n) {
        const int nInside = tally.aInner[n].nInside;
        const double dfInnerByChance = std::max(dfEven * division.aLeftInner[n], tally.aInner[n].byChance());
        const double dfInnerShare = (nInside - dfInnerByChance) / std::max(division.aFittingInner[n], 1);
        if (deviations(nInside, dfInnerByChance) < dfLeastDeviations || nInside < 2 * dfInnerByChance ||
            dfInnerShare < dfLeastRatio * dfShare) {
            return false;
        }
    }
    return true;
}

double cubeOf(double dfHalfEdge)
{
    return 8 * dfHalfEdge * dfHalfEdge * dfHalfEdge;
}

int countNear(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance)
{
    return int(std::count_if(listPoint.begin(), listPoint.end(), [&](const Eigen::Vector3d& point) {
        return distanceFromWhole(basis, point) < dfTolerance;
    }));
}

}  // namespace

std::vector<Coset> findCosets(const LatticeBasis& basis, const LatticePoints& listPoint, double dfTolerance)
{
    std::vector<Coset> listFound;
    dfTolerance = std::min(dfTolerance, g_dfCosetTolerance);
    const auto listIndex = realIndices(basis, listPoint);
    const Division division = dividePoints(basis, listIndex, dfTolerance);
    const auto nLeft = double(division.listLeft.size());
    for (int nDenominator = 2; nDenominator <= g_nMostDenominator; ++nDenominator) {
        const CCosetTable table(nDenominator);
        const double dfWindow = windowOf(nDenominator, dfTolerance);
        const double dfEven = table.multiples() * cubeOf(dfWindow) / (1 - cubeOf(dfTolerance));
        const auto listTally = tallyCosets(table, division, dfWindow);
        for (size_t n = 0; n < listTally.size(); ++n) {
            const Tally& tally = listTally[n];
            Coset coset;
            coset.anNumerator = table.firsts()[n];
            coset.nDenominator = nDenominator;
            coset.nPoints = tally.all.nInside;
            coset.dfByChance = std::max(dfEven * nLeft, tally.all.byChance());
            coset.dfShare = double(coset.nPoints) / double(listIndex.size());
            if (deviations(coset.nPoints, coset.dfByChance) < g_dfStandardDeviations ||
                coset.nPoints < 2 * coset.dfByChance) {
                continue;
            }
            coset.bDemanded = coset.nPoints >= 3 * coset.dfByChance &&
                              isInInnerHalves(tally, division, dfEven);
            listFound.push_back(coset);
        }
    }
    std::stable_sort(listFound.begin(), listFound.end(), [](const Coset& a, const Coset& b) {
        return deviations(a.nPoints, a.dfByChance) > deviations(b.nPoints, b.dfByChance);
    });
    return listFound;
}

LatticeBasis supercell(const LatticeBasis& basis, const Coset& coset)
{
    return shortestBasis(latticeOfMultiples(coset.anNumerator, coset.nDenominator) * basis);
}

LatticeWithCosets latticeAndCosets(const LatticeBasis& basis, const LatticePoints& listPoint,
                                   double dfTolerance)
{
    const int nMostRounds = 4;  // a face-centred cell needs two
    LatticeWithCosets result;
    result.matBasis = refinedBasis(basis, listPoint, g_dfLatticeTolerance);
    result.listAbsence = findAbsences(result.matBasis, listPoint, dfTolerance);
    result.strCentring = centringOf(result.listAbsence);
    std::vector<Absence> listAbsence = result.listAbsence;
    for (int n = 0; n < nMostRounds && !listAbsence.empty(); ++n) {
        result.matBasis = refinedBasis(subcell(result.matBasis, listAbsence.front()), listPoint,
                                       g_dfLatticeTolerance);
        listAbsence = findAbsences(result.matBasis, listPoint, dfTolerance);
    }
    result.matBasis = shortestBasis(result.matBasis);
    result.listNamed = findCosets(result.matBasis, listPoint, dfTolerance);
    for (int n = 0; n < nMostRounds; ++n) {
        const auto itDemanded = std::find_if(result.listNamed.begin(), result.listNamed.end(),
                                             [](const Coset& coset) { return coset.bDemanded; });
        if (itDemanded == result.listNamed.end()) {
            break;
        }
        const LatticeBasis longer = shortestBasis(
            refinedBasis(supercell(result.matBasis, *itDemanded), listPoint, g_dfLatticeTolerance));
        // If the fit went astray, or the lattice was wrong before, the longer cell explains no more points.
        const int nGain = countNear(longer, listPoint, dfTolerance) -
                          countNear(result.matBasis, listPoint, dfTolerance);
        if (nGain < itDemanded->nPoints / 2) {
            break;
        }
        result.matBasis = longer;
        result.listTaken.push_back(*itDemanded);
        result.listNamed = findCosets(result.matBasis, listPoint, dfTolerance);
    }
    return result;
}

QString cosetText(const Coset& coset)
{
    QStringList listNumber;
    for (const int nNumerator : coset.anNumerator) {
        const int nCommon = std::gcd(nNumerator, coset.nDenominator);
        listNumber +=
            nNumerator == 0
                ? QStringLiteral("0")
                : QStringLiteral("%1/%2").arg(nNumerator / nCommon).arg(coset.nDenominator / nCommon);
    }
    return QStringLiteral("%1 % of the peaks lie at (%2)")
        .arg(QString::number(100 * coset.dfShare, 'f', coset.dfShare < 0.0995 ? 1 : 0),
             listNumber.join(QStringLiteral(", ")));
}

}  // namespace tessera
