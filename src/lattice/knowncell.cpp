#include "lattice/knowncell.h"

#include "geometry/angles.h"
#include "lattice/edgesearch.h"
#include "lattice/latticeevidence.h"
#include "lattice/latticeturn.h"
#include "lattice/rotationfit.h"

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr size_t g_nMostPoints = 4000;

/// A trial orientation: the rotation and scale that take the reference basis to the points, and the edges
/// fitted without constraints.
struct Trial {
    Eigen::Matrix3d matRotation = Eigen::Matrix3d::Identity();
    double dfScale = 1;
    LatticeBasis matFree = LatticeBasis::Identity();
    int nFitting = 0;

    LatticeBasis basis(const LatticeBasis& reference) const
    {
        return dfScale * reference * matRotation.transpose();
    }
};

int countFitting(const LatticeBasis& basis, const LatticePoints& listPoint, size_t nStep, double dfTolerance)
{
    int nFitting = 0;
    for (size_t n = 0; n < listPoint.size(); n += nStep) {
        nFitting += distanceFromWhole(basis, listPoint[n]) < dfTolerance ? 1 : 0;
    }
    return nFitting;
}

/// Adds the trials from the edges that were found for two rows of the reference.
void addTrials(std::vector<Trial>& listTrial, const LatticeBasis& reference, int nFirst, int nSecond,
               const std::vector<Eigen::Vector3d>& listFirst, const std::vector<Eigen::Vector3d>& listSecond,
               double dfAngleTolerance)
{
    const Eigen::Vector3d first = reference.row(nFirst);
    const Eigen::Vector3d second = reference.row(nSecond);
    const auto angle = [](const Eigen::Vector3d& v, const Eigen::Vector3d& w) {
        return degrees(std::atan2(v.cross(w).norm(), v.dot(w)));
    };
    // The error of an edge is about the same in Å for all lengths, so the longer edge is the more precise
    // direction.
    const auto triad = [](const Eigen::Vector3d& v, const Eigen::Vector3d& w) {
        Eigen::Matrix3d matRows;
        matRows << v.transpose(), w.transpose(), v.cross(w).normalized().transpose();
        return matRows;
    };
    const double dfAngle = angle(first, second);
    const Eigen::Matrix3d matReference = triad(first, second);
    for (const Eigen::Vector3d& v : listFirst) {
        for (const Eigen::Vector3d& w : listSecond) {
            // The sign of an edge is unknown. That makes four pairs, of which two have different angles.
            for (const double dfSign : {1.0, -1.0}) {
                if (std::abs(angle(v, dfSign * w) - dfAngle) > dfAngleTolerance) {
                    continue;
                }
                for (const double dfBoth : {1.0, -1.0}) {
                    Trial trial;
                    trial.matRotation = rotationBetween(matReference, triad(dfBoth * v, dfBoth * dfSign * w));
                    trial.dfScale = (v.norm() + w.norm()) / (first.norm() + second.norm());
                    listTrial.push_back(trial);
                }
            }
        }
    }
}

/// Whether lengths and angles are within the tolerances. Without this condition a large cell would fit the
/// points of any crystal.
bool keepsCell(const LatticeBasis& basis, const LatticeBasis& reference, const KnownCellOptions& options,
               double dfTolerances = 1)
{
    const auto aNumber = cellOf(basis).numbers();
    const auto aKnown = cellOf(reference).numbers();
    for (size_t n = 0; n < 3; ++n) {
        if (!(std::abs(aNumber[n] / aKnown[n] - 1) < dfTolerances * options.dfLengthTolerance) ||
            !(std::abs(aNumber[n + 3] - aKnown[n + 3]) < dfTolerances * options.dfAngleTolerance)) {
            return false;
        }
    }
    return basis.determinant() > 0;
}

/// Fits rotation and scale to the points that fit a basis. The indices are those of that basis.
void fitRotation(Trial& trial, const LatticeBasis& basis, const LatticeBasis& reference,
                 const LatticePoints& listPoint, const KnownCellOptions& options)
{
    const Eigen::Matrix3d matReciprocal = reference.inverse();
    CRotationFit fit;
    for (const Eigen::Vector3d& point : listPoint) {
        const Eigen::Vector3d index = basis * point;
        const Eigen::Vector3d whole = index.array().round();
        if ((index - whole).cwiseAbs().maxCoeff() < options.dfTolerance) {
            fit.add(matReciprocal * whole, point);
        }
    }
    if (fit.count() >= 3) {
        trial.matRotation = fit.rotation();
        trial.dfScale = std::clamp(1 / fit.scale(), 1 - options.dfLengthTolerance,
                                   1 + options.dfLengthTolerance);
    }
}

/// Fits the edges without constraints, beginning with the points nearest to the origin, and then the
/// rotation for the indices that result. With the rotation alone, an elliptic pattern would give outer
/// points wrong indices. Edges that the points do not determine are those of the rotation.
void refineTrial(Trial& trial, const LatticeBasis& reference, const LatticePoints& listNearFirst,
                 const KnownCellOptions& options)
{
    const size_t nStages = 4;
    trial.matFree = trial.basis(reference);
    LatticePoints listInner;
    for (size_t nStage = 1; nStage <= nStages; ++nStage) {
        listInner.assign(listNearFirst.begin(),
                         listNearFirst.begin() + std::ptrdiff_t(listNearFirst.size() * nStage / nStages));
        const LatticeBasis next = refinedBasis(trial.matFree, listInner, options.dfTolerance);
        // A long c may have been confused with c + a, which is some degrees off. The lattice is the same,
        // and the basis is corrected later.
        if (keepsCell(next, reference, options, 2)) {
            trial.matFree = next;
        }
    }
    fitRotation(trial, trial.matFree, reference, listNearFirst, options);
    const int nFree = countFitting(trial.matFree, listNearFirst, 1, options.dfTolerance);
    const int nTurned = countFitting(trial.basis(reference), listNearFirst, 1, options.dfTolerance);
    if (nTurned > nFree) {
        trial.matFree = trial.basis(reference);
    }
    trial.nFitting = std::max(nFree, nTurned);
}

/// The trials, refined; empty where the search is to end.
std::vector<Trial> trialsOf(const LatticeBasis& shortest, const LatticePoints& listNearFirst,
                            const KnownCellOptions& options, const std::function<bool()>& fnGoOn)
{
    std::array<std::vector<Eigen::Vector3d>, 3> aEdges;
    for (int n = 0; n < 3; ++n) {
        if (fnGoOn && !fnGoOn()) {
            return {};
        }
        const double dfLength = shortest.row(n).norm();
        if (n > 0 && dfLength < shortest.row(n - 1).norm() * (1 + 1e-3)) {
            aEdges[n] = aEdges[n - 1];
        } else {
            aEdges[n] = findEdges(dfLength, options.dfLengthTolerance, listNearFirst);
        }
    }
    std::vector<Trial> listTrial;
    for (const auto& [nFirst, nSecond] : {std::pair(0, 1), std::pair(0, 2), std::pair(1, 2)}) {
        addTrials(listTrial, shortest, nFirst, nSecond, aEdges[nFirst], aEdges[nSecond],
                  options.dfAngleTolerance);
    }
    return listTrial;
}

/// The first trials that are not equivalent by the symmetry of the lattice, at most a given number.
std::vector<Trial> distinctTrials(const std::vector<Trial>& listTrial, const LatticeBasis& reference,
                                  size_t nMost)
{
    // The scatter of trials for one orientation, as a share of an edge. It must be small: for a long c, the
    // confusion of c with c + a gives an orientation that differs by only a degree.
    const double dfOff = 0.005;
    std::vector<Trial> listDistinct;
    std::vector<LatticeBasis> listBasis;
    for (const Trial& trial : listTrial) {
        const LatticeBasis basis = trial.matRotation * reference.transpose();  // as columns
        const bool bKnown = std::any_of(listBasis.begin(), listBasis.end(), [&](const LatticeBasis& former) {
            const Eigen::Matrix3d matWhole = (former.inverse() * basis).array().round();
            const Eigen::RowVector3d off = (former * matWhole - basis).colwise().norm();
            return (off.array() < dfOff * basis.colwise().norm().array()).all();
        });
        if (!bKnown && listDistinct.size() < nMost) {
            listDistinct.push_back(trial);
            listBasis.push_back(basis);
        }
    }
    return listDistinct;
}

std::optional<Trial> bestTrial(const LatticeBasis& shortest, const LatticePoints& listNearFirst,
                               const KnownCellOptions& options, const std::function<bool()>& fnGoOn)
{
    const size_t nRefined = 30;
    const size_t nCounted = 600;  // enough points to distinguish the good trials from most others
    std::vector<Trial> listTrial = trialsOf(shortest, listNearFirst, options, fnGoOn);
    const size_t nStep = listNearFirst.size() / nCounted + 1;
    for (Trial& trial : listTrial) {
        trial.nFitting = countFitting(trial.basis(shortest), listNearFirst, nStep, options.dfTolerance);
    }
    const auto isBetter = [](const Trial& a, const Trial& b) { return a.nFitting > b.nFitting; };
    std::stable_sort(listTrial.begin(), listTrial.end(), isBetter);
    listTrial = distinctTrials(listTrial, shortest, nRefined);
    for (Trial& trial : listTrial) {
        if (fnGoOn && !fnGoOn()) {
            return std::nullopt;
        }
        refineTrial(trial, shortest, listNearFirst, options);
    }
    std::stable_sort(listTrial.begin(), listTrial.end(), isBetter);
    return listTrial.empty() ? std::nullopt : std::optional(listTrial.front());
}

}  // namespace

std::optional<LatticeBasis> basisOfCell(const CellParameters& cell)
{
    for (const double dfLength : {cell.a, cell.b, cell.c}) {
        if (!(dfLength >= 0.5 && dfLength <= 2000)) {
            return std::nullopt;
        }
    }
    for (const double dfAngle : {cell.alpha, cell.beta, cell.gamma}) {
        if (!(dfAngle > 1 && dfAngle < 179)) {
            return std::nullopt;
        }
    }
    const double dfCosAlpha = std::cos(radians(cell.alpha));
    const double dfCosBeta = std::cos(radians(cell.beta));
    const double dfCosGamma = std::cos(radians(cell.gamma));
    const double dfSinGamma = std::sin(radians(cell.gamma));
    const double dfY = (dfCosAlpha - dfCosBeta * dfCosGamma) / dfSinGamma;
    const double dfSquare = 1 - dfCosBeta * dfCosBeta - dfY * dfY;
    if (!(dfSquare > 1e-4)) {  // the edges are co-planar, or the angles contradict each other
        return std::nullopt;
    }
    LatticeBasis basis;
    basis << cell.a, 0, 0, cell.b * dfCosGamma, cell.b * dfSinGamma, 0, cell.c * dfCosBeta, cell.c * dfY,
        cell.c * std::sqrt(dfSquare);
    return basis;
}

std::optional<KnownCellOrientation> orientKnownCell(const CellParameters& cell,
                                                    const LatticePoints& listPoint,
                                                    const KnownCellOptions& options,
                                                    const std::function<bool()>& fnGoOn)
{
    const auto reference = basisOfCell(cell);
    if (!reference) {
        return std::nullopt;
    }
    const LatticePoints listNearFirst = thinnedNearFirst(listPoint, g_nMostPoints);
    auto trial = bestTrial(shortestBasis(*reference), listNearFirst, options, fnGoOn);
    if (!trial) {
        return std::nullopt;
    }
    // Several bases of one lattice can be close to the cell, such as with c and c + a for a long c.
    KnownCellOrientation found;
    found.matRefined = describedAs(*reference, trial->matFree, 0.1).value_or(trial->basis(*reference));
    if (listNearFirst.size() < listPoint.size()) {
        found.matRefined = refinedBasis(found.matRefined, listPoint, options.dfTolerance);
    }
    trial->matRotation = rotationBetween(*reference, found.matRefined);
    fitRotation(*trial, found.matRefined, *reference, listNearFirst, options);
    found.dfScale = trial->dfScale;
    found.matRotated = *reference * trial->matRotation.transpose();
    found.fitRotated = fitOfLattice(found.matRotated, listPoint, options.dfTolerance);
    found.fitRefined = fitOfLattice(found.matRefined, listPoint, options.dfTolerance);
    const LatticeBasis scaled = trial->basis(*reference);
    if (!keepsCell(found.matRefined, *reference, options)) {
        found.matRefined = scaled;
        found.fitRefined = fitOfLattice(scaled, listPoint, options.dfTolerance);
    }
    found.fitScaled = fitOfLattice(scaled, listPoint, options.dfTolerance);
    // A large cell without constraints can come close to a multiple of the cell of any other crystal. So
    // the known cell itself must explain a good part of what the unconstrained one does. Points in a single
    // row leave the rotation about it open; points in a plane determine it.
    const double dfLeastPart = 1.0 / 3;
    const auto beyondChance = [](const LatticeFit& fit) { return fit.share() - fit.dfByChance; };
    if (evidenceOf(found.fitScaled, scaled, listPoint, options.dfTolerance) < g_dfEvidenceOfOrientation ||
        beyondChance(found.fitScaled) < options.dfLeastShare ||
        beyondChance(found.fitScaled) < dfLeastPart * beyondChance(found.fitRefined) ||
        dimensionsOfFit(scaled, listPoint, options.dfTolerance) < 2) {
        return std::nullopt;
    }
    return found;
}

}  // namespace tessera
