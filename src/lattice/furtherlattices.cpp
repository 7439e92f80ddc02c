#include "lattice/furtherlattices.h"

#include "lattice/cosets.h"
#include "lattice/knowncell.h"
#include "lattice/latticeevidence.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr size_t g_nFewestPoints = 10;

/// The bases whose points are removed: each lattice with the superlattice that its unexplained points
/// demand, as these would otherwise look like another lattice.
std::vector<LatticeBasis> basesWithCosets(const std::vector<OneOfLattices>& listLattice,
                                          const LatticePoints& listPoint)
{
    std::vector<LatticeBasis> listBasis;
    for (const OneOfLattices& lattice : listLattice) {
        const LatticeWithCosets result = latticeAndCosets(lattice.matBasis, listPoint);
        listBasis.push_back(result.listTaken.empty() ? lattice.matBasis : result.matBasis);
    }
    return listBasis;
}

LatticePoints leftOver(const std::vector<LatticeBasis>& listBasis, const LatticePoints& listPoint)
{
    LatticePoints listRest;
    for (const Eigen::Vector3d& point : listPoint) {
        const bool bFits = std::any_of(listBasis.begin(), listBasis.end(), [&](const LatticeBasis& basis) {
            return distanceFromWhole(basis, point) < g_dfLatticeTolerance;
        });
        if (!bFits && point.allFinite()) {
            listRest.push_back(point);
        }
    }
    return listRest;
}

bool explainsEnough(const OneOfLattices& lattice, const LatticePoints& listRest, double dfEvidence,
                    double dfLeastShare)
{
    const LatticeFit& fit = lattice.fitOfRest;
    return fit.share() - fit.dfByChance >= dfLeastShare &&
           evidenceOf(fit, lattice.matBasis, listRest) >= dfEvidence &&
           dimensionsOfFit(lattice.matBasis, listRest) == 3;
}

/// Whether the edges of the second lattice are whole combinations of those of the first, so that its
/// reciprocal lattice contains all points of the first one.
bool holdsAllPointsOf(const LatticeBasis& first, const LatticeBasis& second)
{
    const double dfOff = 0.05;  // in edges of the first, times the number of edges combined
    const Eigen::Matrix3d matCombination = second * first.inverse();
    const Eigen::Matrix3d matWhole = matCombination.array().round();
    return std::abs(matWhole.determinant()) > 0.5 &&
           ((matCombination - matWhole).array().abs() <= dfOff * matWhole.array().abs().max(1)).all();
}

bool isNew(const LatticeBasis& basis, const std::vector<OneOfLattices>& listLattice, double dfLeastTurn)
{
    return std::none_of(listLattice.begin(), listLattice.end(), [&](const OneOfLattices& former) {
        const auto turn = turnBetween(former.matBasis, basis);
        return (turn && turn->dfAngle < dfLeastTurn) || holdsAllPointsOf(former.matBasis, basis) ||
               holdsAllPointsOf(basis, former.matBasis);
    });
}

/// Finds the cell of the first lattice in another orientation.
std::optional<OneOfLattices> sameCellAgain(const LatticeBasis& first, const LatticePoints& listRest,
                                           double dfLeastShare)
{
    const double dfMostMisfit = 0.02;  // small, as both cells are from the same frames
    KnownCellOptions sameCell;
    sameCell.dfLengthTolerance = 0.015;
    sameCell.dfAngleTolerance = 1.5;
    sameCell.dfLeastShare = dfLeastShare;
    const auto known = orientKnownCell(cellOf(first), listRest, sameCell);
    if (!known || !turnBetween(first, known->matRefined, dfMostMisfit)) {
        return std::nullopt;
    }
    OneOfLattices lattice;
    lattice.matBasis = shortestBasis(known->matRefined);
    lattice.fitOfRest = known->fitRefined;
    return explainsEnough(lattice, listRest, g_dfEvidenceOfFreeOrientation, dfLeastShare)
               ? std::optional(lattice)
               : std::nullopt;
}

/// The better of two: the first cell in another orientation, or a lattice with any cell.
std::optional<OneOfLattices> nextLattice(const std::vector<OneOfLattices>& listLattice,
                                         const LatticePoints& listRest, const FurtherLatticesOptions& options,
                                         const std::function<bool()>& fnGoOn)
{
    auto same = sameCellAgain(listLattice.front().matBasis, listRest, options.dfLeastShare);
    if (same && !isNew(same->matBasis, listLattice, options.dfLeastTurn)) {
        same.reset();
    }
    if (const auto found = searchDirections(listRest, options.search, fnGoOn)) {
        OneOfLattices any;
        any.matBasis = found->matBasis;
        any.fitOfRest = fitOfLattice(any.matBasis, listRest);
        // A lattice of another cell must explain clearly more points than one of the first cell, whose
        // points it may imitate.
        const double dfClearly = 1.1;
        if ((!same || any.fitOfRest.nFitting > dfClearly * same->fitOfRest.nFitting) &&
            explainsEnough(any, listRest, g_dfEvidenceOfLattice, options.dfLeastShare) &&
            isNew(any.matBasis, listLattice, options.dfLeastTurn)) {
            return any;
        }
    }
    return same;
}

/// Assigns each point to the lattice with the nearest reflection in reciprocal space.
std::vector<int> labelPoints(std::vector<OneOfLattices>& listLattice, const LatticePoints& listPoint)
{
    std::vector<LatticeBasis> listReciprocal;
    for (OneOfLattices& lattice : listLattice) {
        lattice.nOwn = 0;
        listReciprocal.emplace_back(lattice.matBasis.inverse());
    }
    std::vector<int> vecLabel(listPoint.size(), -1);
    for (size_t i = 0; i < listPoint.size(); ++i) {
        double dfNearest = 0;
        for (size_t n = 0; n < listLattice.size(); ++n) {
            const Eigen::Vector3d index = listLattice[n].matBasis * listPoint[i];
            const Eigen::Vector3d off = index - index.array().round().matrix();
            const double dfDistance = (listReciprocal[n] * off).norm();
            if (off.cwiseAbs().maxCoeff() < g_dfLatticeTolerance &&
                (vecLabel[i] < 0 || dfDistance < dfNearest)) {
                vecLabel[i] = int(n);
                dfNearest = dfDistance;
            }
        }
        if (vecLabel[i] >= 0) {
            ++listLattice[size_t(vecLabel[i])].nOwn;
        }
    }
    return vecLabel;
}

}  // namespace

LatticesOfPoints findFurtherLattices(const LatticeBasis& basis, const LatticePoints& listPoint,
                                     const FurtherLatticesOptions& options,
                                     const std::function<bool()>& fnGoOn)
{
    LatticesOfPoints found;
    OneOfLattices first;
    first.matBasis = basis;
    first.fit = fitOfLattice(basis, listPoint);
    first.fitOfRest = first.fit;
    found.listLattice.push_back(first);
    const bool bSound = basis.allFinite() && std::abs(basis.determinant()) > 1e-9;
    while (bSound && int(found.listLattice.size()) < options.nMostLattices && (!fnGoOn || fnGoOn())) {
        const LatticePoints listRest = leftOver(basesWithCosets(found.listLattice, listPoint), listPoint);
        if (listRest.size() < g_nFewestPoints) {
            break;
        }
        auto next = nextLattice(found.listLattice, listRest, options, fnGoOn);
        if (!next) {
            break;
        }
        next->turn = turnBetween(basis, next->matBasis);
        next->fit = fitOfLattice(next->matBasis, listPoint);
        found.listLattice.push_back(*next);
    }
    found.vecLabel = bSound ? labelPoints(found.listLattice, listPoint)
                            : std::vector<int>(listPoint.size(), -1);
    return found;
}

}  // namespace tessera
