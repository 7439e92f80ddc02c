#include "refinement/cellform.h"

#include "geometry/angles.h"

#include <ceres/jet.h>
#include <ceres/rotation.h>

namespace tessera {

namespace {

using Jet = ceres::Jet<double, 9>;
template <class T>
using Matrix3 = Eigen::Matrix<T, 3, 3>;

/// The number of cell parameters that a lattice system leaves free.
int numbersOfSystem(LatticeSystem system)
{
    switch (system) {
        case LatticeSystem::Triclinic:
            return 6;
        case LatticeSystem::Monoclinic:
            return 4;
        case LatticeSystem::Orthorhombic:
            return 3;
        case LatticeSystem::Cubic:
            return 1;
        default:
            return 2;
    }
}

/// a, b, c, α, β, γ from the free parameters of a lattice system.
template <class T>
std::array<T, 6> cellOfSystem(LatticeSystem system, const T* pNumber)
{
    const T right = T(90.0);
    switch (system) {
        case LatticeSystem::Triclinic:
            return {pNumber[0], pNumber[1], pNumber[2], pNumber[3], pNumber[4], pNumber[5]};
        case LatticeSystem::Monoclinic:
            return {pNumber[0], pNumber[1], pNumber[2], right, pNumber[3], right};
        case LatticeSystem::Orthorhombic:
            return {pNumber[0], pNumber[1], pNumber[2], right, right, right};
        case LatticeSystem::Tetragonal:
            return {pNumber[0], pNumber[0], pNumber[1], right, right, right};
        case LatticeSystem::Cubic:
            return {pNumber[0], pNumber[0], pNumber[0], right, right, right};
        default:
            return {pNumber[0], pNumber[0], pNumber[1], right, right, T(120.0)};
    }
}

std::vector<double> freeNumbersOf(LatticeSystem system, const CellParameters& cell)
{
    switch (system) {
        case LatticeSystem::Triclinic:
            return {cell.a, cell.b, cell.c, cell.alpha, cell.beta, cell.gamma};
        case LatticeSystem::Monoclinic:
            return {cell.a, cell.b, cell.c, cell.beta};
        case LatticeSystem::Orthorhombic:
            return {cell.a, cell.b, cell.c};
        case LatticeSystem::Cubic:
            return {cell.a};
        default:
            return {cell.a, cell.c};
    }
}

/// The basis (rows a, b, c) with a along x and b in the plane of x and y.
template <class T>
Matrix3<T> standardAxes(const std::array<T, 6>& cell)
{
    using std::cos;
    using std::sin;
    using std::sqrt;
    const double dfRadian = g_dfPi / 180;
    const T ca = cos(cell[3] * dfRadian), cb = cos(cell[4] * dfRadian), cg = cos(cell[5] * dfRadian);
    const T sg = sin(cell[5] * dfRadian);
    const T y = (ca - cb * cg) / sg;
    Matrix3<T> rows;
    rows << cell[0], T(0.0), T(0.0), cell[1] * cg, cell[1] * sg, T(0.0), cell[2] * cb, cell[2] * y,
        cell[2] * sqrt(1.0 - cb * cb - y * y);
    return rows;
}

template <class T>
Matrix3<T> inverseOf(const Matrix3<T>& m)
{
    Matrix3<T> inverse;
    inverse.col(0) = m.row(1).cross(m.row(2)).transpose();
    inverse.col(1) = m.row(2).cross(m.row(0)).transpose();
    inverse.col(2) = m.row(0).cross(m.row(1)).transpose();
    const T volume = m.row(0).dot(inverse.col(0).transpose());
    return inverse / volume;
}

/// The six cell parameters of a basis (rows a, b, c).
template <class T>
std::array<T, 6> parametersOf(const Matrix3<T>& rows)
{
    using std::acos;
    using std::sqrt;
    std::array<T, 3> length;
    for (int n = 0; n < 3; ++n) {
        length[n] = sqrt(rows.row(n).squaredNorm());
    }
    const auto angle = [&](int n, int m) {
        return acos(rows.row(n).dot(rows.row(m)) / (length[n] * length[m])) * (180 / g_dfPi);
    };
    return {length[0], length[1], length[2], angle(1, 2), angle(0, 2), angle(0, 1)};
}

template <class T>
Matrix3<T> constrainedReciprocal(const CellConstraint& constraint, const Eigen::Matrix3d& matOrientation,
                                 const T* pNumber)
{
    std::array<T, 9> aTurn;  // column by column
    ceres::AngleAxisToRotationMatrix(pNumber, aTurn.data());
    const Matrix3<T> turn = Eigen::Map<const Matrix3<T>>(aTurn.data());
    const Matrix3<T> rows = standardAxes(cellOfSystem(constraint.system, pNumber + 3)) *
                            matOrientation.cast<T>().eval() * turn.transpose().eval();
    return constraint.matTransform.transpose().cast<T>().eval() * inverseOf<T>(rows).transpose().eval();
}

CellParameters cellFrom(const std::array<double, 6>& a)
{
    return {a[0], a[1], a[2], a[3], a[4], a[5]};
}

std::array<Jet, 9> jetsOf(const GeometryNumbers& numbers)
{
    std::array<Jet, 9> aJet;
    for (int n = 0; n < 9; ++n) {
        aJet[n] = Jet(numbers[n], n);
    }
    return aJet;
}

}  // namespace

CellParameters constrainedCell(LatticeSystem system, const CellParameters& cell)
{
    CellParameters mean = cell;
    if (system == LatticeSystem::Cubic) {
        mean.a = (cell.a + cell.b + cell.c) / 3;
        return cellFrom(cellOfSystem<double>(system, &mean.a));
    }
    if (system == LatticeSystem::Tetragonal || system == LatticeSystem::Hexagonal ||
        system == LatticeSystem::Rhombohedral) {
        mean.a = (cell.a + cell.b) / 2;
    }
    const std::vector<double> listNumber = freeNumbersOf(system, mean);
    return cellFrom(cellOfSystem<double>(system, listNumber.data()));
}

CellForm::CellForm(const CellConstraint& constraint, const Eigen::Matrix3d& reciprocal)
    : m_constraint(constraint)
{
    const Eigen::Matrix3d matConventional = constraint.matTransform * reciprocal.inverse().transpose();
    const CellParameters cell = constrainedCell(constraint.system, cellOf(matConventional));
    const Eigen::Matrix3d matAxes = standardAxes(cell.numbers());
    // The rotation that brings the axes closest together. Source: Kabsch (1976), Acta Cryst. A32, 922–923. A
    // conventional cell is right-handed; the sign preserves the hand of a left-handed one.
    const Eigen::JacobiSVD<Eigen::Matrix3d> svd(matAxes.transpose() * matConventional,
                                                Eigen::ComputeFullU | Eigen::ComputeFullV);
    m_matOrientation = svd.matrixU() * svd.matrixV().transpose();
}

int CellForm::freeNumbers() const
{
    return m_constraint ? 3 + numbersOfSystem(m_constraint->system) : 9;
}

void CellForm::setStart(GeometryNumbers& numbers, const Eigen::Matrix3d& reciprocal) const
{
    std::fill_n(numbers.begin(), 9, 0.0);
    if (!m_constraint) {
        Eigen::Map<Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(numbers.data()) = reciprocal;
        return;
    }
    const CellParameters cell = constrainedCell(
        m_constraint->system, cellOf(m_constraint->matTransform * reciprocal.inverse().transpose()));
    const std::vector<double> listNumber = freeNumbersOf(m_constraint->system, cell);
    std::copy(listNumber.begin(), listNumber.end(), numbers.begin() + 3);
}

Eigen::Matrix3d CellForm::reciprocal(const GeometryNumbers& numbers) const
{
    if (!m_constraint) {
        return Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(numbers.data());
    }
    return constrainedReciprocal(*m_constraint, m_matOrientation, numbers.data());
}

Eigen::Matrix3d CellForm::reciprocal(const GeometryNumbers& numbers,
                                     std::vector<Eigen::Matrix3d>& listDerivative) const
{
    listDerivative.assign(size_t(freeNumbers()), Eigen::Matrix3d::Zero());
    if (!m_constraint) {
        for (int n = 0; n < 9; ++n) {
            listDerivative[n](n / 3, n % 3) = 1;
        }
        return reciprocal(numbers);
    }
    const std::array<Jet, 9> aJet = jetsOf(numbers);
    const Matrix3<Jet> mat = constrainedReciprocal(*m_constraint, m_matOrientation, aJet.data());
    Eigen::Matrix3d matValue;
    for (int n = 0; n < 9; ++n) {
        const Jet& jet = mat(n / 3, n % 3);
        matValue(n / 3, n % 3) = jet.a;
        for (size_t m = 0; m < listDerivative.size(); ++m) {
            listDerivative[m](n / 3, n % 3) = jet.v[Eigen::Index(m)];
        }
    }
    return matValue;
}

CellParameters CellForm::cell(const GeometryNumbers& numbers, Eigen::MatrixXd* pDerivative) const
{
    const std::array<Jet, 9> aJet = jetsOf(numbers);
    std::array<Jet, 6> aCell;
    if (m_constraint) {
        aCell = cellOfSystem(m_constraint->system, aJet.data() + 3);
    } else {
        const Matrix3<Jet> rows = Eigen::Map<const Matrix3<Jet>>(aJet.data()).transpose();
        aCell = parametersOf<Jet>(inverseOf<Jet>(rows).transpose().eval());
    }
    std::array<double, 6> aValue;
    if (pDerivative) {
        pDerivative->resize(6, freeNumbers());
    }
    for (size_t n = 0; n < 6; ++n) {
        aValue[n] = aCell[n].a;
        if (pDerivative) {
            pDerivative->row(Eigen::Index(n)) = aCell[n].v.head(freeNumbers()).transpose();
        }
    }
    return cellFrom(aValue);
}

CellParameters cellOfReciprocal(const Eigen::Matrix3d& reciprocal)
{
    return cellFrom(parametersOf<double>(inverseOf<double>(reciprocal).transpose().eval()));
}

}  // namespace tessera
