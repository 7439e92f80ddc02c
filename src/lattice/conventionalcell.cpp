#include "lattice/conventionalcell.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace tessera {

namespace {

using Rows = std::array<Eigen::Vector3i, 3>;

Eigen::Matrix3i matrixOf(const Rows& rows)
{
    Eigen::Matrix3i mat;
    mat << rows[0].transpose(), rows[1].transpose(), rows[2].transpose();
    return mat;
}

/// Reverses one row where the three are left-handed.
Eigen::Matrix3i rightHanded(Rows rows, int nRowToTurn)
{
    if (matrixOf(rows).determinant() < 0) {
        rows[nRowToTurn] = -rows[nRowToTurn];
    }
    return matrixOf(rows);
}

double scalarProduct(const Eigen::Matrix3d& metric, const Eigen::Vector3i& v, const Eigen::Vector3i& w)
{
    return v.cast<double>().dot(metric * w.cast<double>());
}

bool isShorter(const Eigen::Matrix3d& metric, const Eigen::Vector3i& v, const Eigen::Vector3i& w)
{
    return scalarProduct(metric, v, v) < scalarProduct(metric, w, w);
}

/// Whether a lattice vector divided by a number is a lattice vector, too.
bool isMultiple(const Eigen::Vector3i& v, int nDivisor)
{
    return (v.array() - v.array() / nDivisor * nDivisor == 0).all();
}

std::vector<Eigen::Matrix3i> operationsOfOrder(const RotationGroup& group, int nOrder)
{
    std::vector<Eigen::Matrix3i> list;
    for (const Eigen::Matrix3i& matOperation : group.listOperation) {
        if (orderOf(matOperation) == nOrder) {
            list.push_back(matOperation);
        }
    }
    return list;
}

/// Two vectors that span all lattice vectors of the plane with these indices.
std::array<Eigen::Vector3i, 2> basisOfPlane(const Eigen::Vector3i& plane)
{
    const int nDivisor = std::gcd(plane.x(), plane.y());
    if (nDivisor == 0) {
        return {Eigen::Vector3i::UnitX(), Eigen::Vector3i::UnitY()};
    }
    // Bézout's numbers s and t with s h + t k = nDivisor: one of |k| values of s leaves no remainder.
    int s = 0;
    while (plane.y() != 0 && (nDivisor - s * plane.x()) % plane.y() != 0) {
        ++s;
    }
    s = plane.y() == 0 ? plane.x() / nDivisor : s;
    const int t = plane.y() == 0 ? 0 : (nDivisor - s * plane.x()) / plane.y();
    return {Eigen::Vector3i(-plane.y() / nDivisor, plane.x() / nDivisor, 0),
            Eigen::Vector3i(-plane.z() * s, -plane.z() * t, nDivisor)};
}

/// The three shortest vectors of the plane, the shortest first. Their sum is zero, and none of the angles
/// between them is acute.
Rows shortestOfPlane(const Eigen::Vector3i& plane, const Eigen::Matrix3d& metric)
{
    auto [v, w] = basisOfPlane(plane);
    const int nMostRounds = 100;
    for (int n = 0; n < nMostRounds; ++n) {
        if (isShorter(metric, w, v)) {
            std::swap(v, w);
        }
        const int nMultiple = int(std::lround(scalarProduct(metric, v, w) / scalarProduct(metric, v, v)));
        if (nMultiple == 0) {
            break;
        }
        w -= nMultiple * v;
    }
    if (scalarProduct(metric, v, w) > 0) {
        w = -w;
    }
    return {v, w, -v - w};
}

double cosineBetween(const Eigen::Matrix3d& metric, const Eigen::Vector3i& v, const Eigen::Vector3i& w)
{
    return scalarProduct(metric, v, w) / std::sqrt(scalarProduct(metric, v, v) * scalarProduct(metric, w, w));
}

ConventionalCell monoclinicCell(const RotationGroup& group, const Eigen::Matrix3d& metric)
{
    const Eigen::Matrix3i matTurn = group.listOperation.back();
    const Eigen::Vector3i axis = axisOf(matTurn);
    const Eigen::Vector3i plane = axisOf(matTurn.transpose());
    const Rows rows = shortestOfPlane(plane, metric);
    if (std::abs(axis.dot(plane)) == 1) {
        return {LatticeSystem::Monoclinic, 'P', rightHanded({rows[0], axis, rows[1]}, 1)};
    }
    // One of the three vectors makes a lattice vector with b when both are halved. It is a of a C cell, and
    // the other two are a and c of an I cell.
    const auto centred = std::find_if(
        rows.begin(), rows.end(), [&axis](const Eigen::Vector3i& row) { return isMultiple(row + axis, 2); });
    const int n = int(centred - rows.begin()) % 3;
    const Eigen::Vector3i& a = rows[n];
    const Eigen::Vector3i& c = rows[n == 0 ? 1 : 0];  // the shorter of the other two
    const Eigen::Vector3i& other = rows[n == 2 ? 1 : 2];
    const double dfC = std::abs(cosineBetween(metric, a, c));
    const double dfOther = std::abs(cosineBetween(metric, a, other));
    const double dfI = std::abs(cosineBetween(metric, c, other));
    const double dfRounding = 1e-9;
    if (dfI < std::min(dfC, dfOther) - dfRounding) {
        return {LatticeSystem::Monoclinic, 'I', rightHanded({c, axis, other}, 1)};
    }
    return {LatticeSystem::Monoclinic, 'C', rightHanded({a, axis, dfOther < dfC ? other : c}, 1)};
}

/// The centring P, I or F of three orthogonal axes, from the volume that they span.
char centringOfBox(const Rows& rows)
{
    const int nPoints = std::abs(matrixOf(rows).determinant());
    if (nPoints == 2) {
        return isMultiple(rows[0] + rows[1] + rows[2], 2) ? 'I' : 'C';
    }
    return nPoints == 1 ? 'P' : 'F';
}

ConventionalCell orthorhombicCell(const RotationGroup& group, const Eigen::Matrix3d& metric)
{
    Rows rows;
    std::transform(group.listOperation.begin() + 1, group.listOperation.end(), rows.begin(), axisOf);
    std::stable_sort(rows.begin(), rows.end(), [&metric](const Eigen::Vector3i& v, const Eigen::Vector3i& w) {
        return isShorter(metric, v, w);
    });
    const char chCentring = centringOfBox(rows);
    if (chCentring == 'C') {
        if (isMultiple(rows[1] + rows[2], 2)) {
            rows = {rows[1], rows[2], rows[0]};
        } else if (isMultiple(rows[0] + rows[2], 2)) {
            rows = {rows[0], rows[2], rows[1]};
        }
    }
    return {LatticeSystem::Orthorhombic, chCentring, rightHanded(rows, 2)};
}

/// The shortest lattice vector along a twofold axis that is perpendicular to the main axis.
Eigen::Vector3i shortestAcross(const RotationGroup& group, const Eigen::Vector3i& mainAxis,
                               const Eigen::Matrix3d& metric)
{
    Eigen::Vector3i shortest = Eigen::Vector3i::Zero();
    for (const Eigen::Matrix3i& matTurn : operationsOfOrder(group, 2)) {
        const Eigen::Vector3i axis = axisOf(matTurn);
        if (!axis.cross(mainAxis).isZero() && (shortest.isZero() || isShorter(metric, axis, shortest))) {
            shortest = axis;
        }
    }
    return shortest;
}

ConventionalCell tetragonalCell(const RotationGroup& group, const Eigen::Matrix3d& metric)
{
    const Eigen::Matrix3i matQuarter = operationsOfOrder(group, 4).front();
    const Eigen::Vector3i c = axisOf(matQuarter);
    const Eigen::Vector3i a = shortestAcross(group, c, metric);
    const Rows rows = {a, matQuarter * a, c};
    return {LatticeSystem::Tetragonal, centringOfBox(rows), rightHanded(rows, 1)};
}

/// The cell of a group with a threefold or sixfold main axis.
std::optional<ConventionalCell> hexagonalCell(const RotationGroup& group, const Eigen::Matrix3d& metric)
{
    const Eigen::Matrix3i matThird = operationsOfOrder(group, 3).front();
    const Eigen::Vector3i c = axisOf(matThird);
    const Eigen::Vector3i a = shortestAcross(group, c, metric);
    Rows rows = {a, matThird * a, c};
    if (!operationsOfOrder(group, 6).empty()) {
        return ConventionalCell{LatticeSystem::Hexagonal, 'P', rightHanded(rows, 2)};
    }
    Eigen::Matrix3i matRows = rightHanded(rows, 2);
    const auto isObverse = [&matRows] {
        return isMultiple(matRows.transpose() * Eigen::Vector3i(2, 1, 1), 3);
    };
    if (!isObverse()) {
        matRows.topRows(2) *= -1;
    }
    if (std::abs(matRows.determinant()) != 3 || !isObverse()) {
        return std::nullopt;
    }
    return ConventionalCell{LatticeSystem::Rhombohedral, 'R', matRows};
}

ConventionalCell cubicCell(const RotationGroup& group)
{
    Rows rows = {Eigen::Vector3i::Zero(), Eigen::Vector3i::Zero(), Eigen::Vector3i::Zero()};
    for (const Eigen::Matrix3i& matQuarter : operationsOfOrder(group, 4)) {
        const Eigen::Vector3i axis = axisOf(matQuarter);
        *std::find_if(rows.begin(), rows.end(), [&axis](const Eigen::Vector3i& row) {
            return row.isZero() || row == axis || row == -axis;
        }) = axis;
    }
    return {LatticeSystem::Cubic, centringOfBox(rows), rightHanded(rows, 2)};
}

}  // namespace

std::optional<ConventionalCell> conventionalCell(const RotationGroup& group, const Eigen::Matrix3d& metric)
{
    switch (group.listOperation.size()) {
        case 1:
            return ConventionalCell();
        case 2:
            return monoclinicCell(group, metric);
        case 4:
            return orthorhombicCell(group, metric);
        case 8:
            return tetragonalCell(group, metric);
        case 6:
        case 12:
            return hexagonalCell(group, metric);
        case 24:
            return cubicCell(group);
        default:
            return std::nullopt;
    }
}

}  // namespace tessera
