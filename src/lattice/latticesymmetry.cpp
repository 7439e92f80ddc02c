#include "lattice/latticesymmetry.h"

#include "lattice/cellreduction.h"

#include "geometry/angles.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace tessera {

namespace {

Eigen::Matrix3d averagedMetric(const RotationGroup& group, const Eigen::Matrix3d& metric)
{
    Eigen::Matrix3d matSum = Eigen::Matrix3d::Zero();
    for (const Eigen::Matrix3i& matOperation : group.listOperation) {
        const Eigen::Matrix3d mat = matOperation.cast<double>();
        matSum += mat.transpose() * metric * mat;
    }
    return matSum / double(group.listOperation.size());
}

/// The basis with a given metric, rotated to be as close as possible to another basis.
/// Source: Kabsch (1976), Acta Cryst. A32, 922–923.
LatticeBasis basisOfMetric(const Eigen::Matrix3d& metric, const LatticeBasis& close)
{
    const Eigen::Matrix3d matLower = metric.llt().matrixL();
    const Eigen::JacobiSVD<Eigen::Matrix3d> svd(matLower.transpose() * close,
                                                Eigen::ComputeFullU | Eigen::ComputeFullV);
    return matLower * svd.matrixU() * svd.matrixV().transpose();
}

/// The setting with the axes closest to the old ones, among those that are equivalent by the symmetry.
Eigen::Matrix3i closestToIdentity(const Eigen::Matrix3i& matRows, const Eigen::Matrix3i& matOldToReduced,
                                  const RotationGroup& group)
{
    Eigen::Matrix3i matBest = Eigen::Matrix3i::Zero();
    double dfBest = 0;
    for (const Eigen::Matrix3i& matOperation : group.listOperation) {
        const Eigen::Matrix3i mat = matRows * matOperation.transpose() * matOldToReduced;
        const double dfDistance = (mat.cast<double>() - Eigen::Matrix3d::Identity()).squaredNorm();
        if (matBest.isZero() || dfDistance < dfBest) {
            matBest = mat;
            dfBest = dfDistance;
        }
    }
    return matBest;
}

void setMisfits(LatticeSymmetry& symmetry)
{
    const std::array<double, 6> aMeasured = symmetry.cellMeasured.numbers();
    const std::array<double, 6> aConstrained = symmetry.cellConstrained.numbers();
    for (size_t n = 0; n < 3; ++n) {
        symmetry.dfMisfitLengths = std::max(symmetry.dfMisfitLengths,
                                            100 * std::abs(aMeasured[n] / aConstrained[n] - 1));
        symmetry.dfMisfitAngles = std::max(symmetry.dfMisfitAngles,
                                           std::abs(aMeasured[n + 3] - aConstrained[n + 3]));
    }
}

/// The strain of the lattice that the misfits mean, %, with angles in radians.
double strainOf(const LatticeSymmetry& symmetry)
{
    return std::max(symmetry.dfMisfitLengths, 100 * radians(symmetry.dfMisfitAngles));
}

std::optional<LatticeSymmetry> symmetryOf(const RotationGroup& group, const LatticeBasis& basis,
                                          const LatticeBasis& reduced)
{
    const Eigen::Matrix3d metric = averagedMetric(group, reduced * reduced.transpose());
    const std::optional<ConventionalCell> cell = conventionalCell(group, metric);
    if (!cell) {
        return std::nullopt;
    }
    const Eigen::Matrix3i matOldToReduced = (reduced * basis.inverse()).array().round().matrix().cast<int>();
    LatticeSymmetry symmetry;
    symmetry.system = cell->system;
    symmetry.chCentring = cell->chCentring;
    symmetry.nRotations = int(group.listOperation.size());
    symmetry.matTransform = closestToIdentity(cell->matRows, matOldToReduced, group);
    symmetry.basisMeasured = symmetry.matTransform.cast<double>() * basis;
    const Eigen::Matrix3d matRows = cell->matRows.cast<double>();
    symmetry.basisConstrained = basisOfMetric(matRows * metric * matRows.transpose(), symmetry.basisMeasured);
    symmetry.cellMeasured = cellOf(symmetry.basisMeasured);
    symmetry.cellConstrained = cellOf(symmetry.basisConstrained);
    symmetry.dfObliquity = group.dfObliquity;
    setMisfits(symmetry);
    return symmetry;
}

}  // namespace

std::vector<LatticeSymmetry> latticeSymmetries(const LatticeBasis& basis, const SymmetryLimits& limits)
{
    std::vector<LatticeSymmetry> list;
    const LatticeBasis reduced = niggliBasis(basis);
    if (reduced.isZero()) {
        return list;
    }
    for (const RotationGroup& group : rotationGroups(twofoldAxes(reduced, limits.dfObliquity))) {
        const std::optional<LatticeSymmetry> symmetry = symmetryOf(group, basis, reduced);
        if (symmetry && symmetry->dfMisfitLengths <= limits.dfLengths &&
            symmetry->dfMisfitAngles <= limits.dfAngles) {
            list.push_back(*symmetry);
        }
    }
    std::stable_sort(list.begin(), list.end(), [](const LatticeSymmetry& one, const LatticeSymmetry& other) {
        return one.nRotations != other.nRotations ? one.nRotations > other.nRotations
                                                  : strainOf(one) < strainOf(other);
    });
    return list;
}

std::vector<LatticeSymmetry> bestOfEachType(const std::vector<LatticeSymmetry>& listSymmetry)
{
    std::vector<LatticeSymmetry> listBest;
    std::set<QString> setSymbol;
    for (const LatticeSymmetry& symmetry : listSymmetry) {
        if (setSymbol.insert(bravaisSymbol(symmetry)).second) {
            listBest.push_back(symmetry);
        }
    }
    return listBest;
}

std::optional<LatticeSymmetry> proposedSymmetry(const std::vector<LatticeSymmetry>& listSymmetry,
                                                const CellUncertainty& uncertainty)
{
    const double dfDeviations = 3;
    const auto it = std::find_if(
        listSymmetry.begin(), listSymmetry.end(), [&](const LatticeSymmetry& symmetry) {
            return symmetry.nRotations == 1 ||
                   (symmetry.dfMisfitLengths <= dfDeviations * uncertainty.dfLengths &&
                    symmetry.dfMisfitAngles <= dfDeviations * uncertainty.dfAngles);
        });
    return it == listSymmetry.end() ? std::nullopt : std::make_optional(*it);
}

QString nameOf(LatticeSystem system)
{
    switch (system) {
        case LatticeSystem::Monoclinic:
            return QStringLiteral("monoclinic");
        case LatticeSystem::Orthorhombic:
            return QStringLiteral("orthorhombic");
        case LatticeSystem::Tetragonal:
            return QStringLiteral("tetragonal");
        case LatticeSystem::Rhombohedral:
            return QStringLiteral("rhombohedral");
        case LatticeSystem::Hexagonal:
            return QStringLiteral("hexagonal");
        case LatticeSystem::Cubic:
            return QStringLiteral("cubic");
        default:
            return QStringLiteral("triclinic");
    }
}

QString bravaisSymbol(const LatticeSymmetry& symmetry)
{
    if (symmetry.system == LatticeSystem::Triclinic) {
        return QStringLiteral("aP");
    }
    // Rhombohedral and hexagonal lattices form one crystal family with the letter h.
    const QChar chFamily = symmetry.system == LatticeSystem::Rhombohedral ? QLatin1Char('h')
                                                                          : nameOf(symmetry.system).at(0);
    const bool bMonoclinicI = symmetry.system == LatticeSystem::Monoclinic && symmetry.chCentring == 'I';
    return QString(chFamily) + QLatin1Char(bMonoclinicI ? 'C' : symmetry.chCentring);
}

}  // namespace tessera
