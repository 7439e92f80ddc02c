#include "crystals/cellsettings.h"

#include "integration/unitcell.h"
#include "lattice/cellreduction.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tessera {

namespace {

constexpr double g_dfFarApart = 10;  ///< the distance of lattices that have nothing in common

/// Rows: axes of a primitive cell along those of the centred one.
Eigen::Matrix3d primitiveAxes(char chCentring)
{
    const double dfThird = 1.0 / 3;
    Eigen::Matrix3d mat = Eigen::Matrix3d::Identity();
    switch (chCentring) {
        case 'A':
            mat << 1, 0, 0, 0, 0.5, -0.5, 0, 0.5, 0.5;
            break;
        case 'B':
            mat << 0.5, 0, -0.5, 0, 1, 0, 0.5, 0, 0.5;
            break;
        case 'C':
            mat << 0.5, -0.5, 0, 0.5, 0.5, 0, 0, 0, 1;
            break;
        case 'I':
            mat << -0.5, 0.5, 0.5, 0.5, -0.5, 0.5, 0.5, 0.5, -0.5;
            break;
        case 'F':
            mat << 0, 0.5, 0.5, 0.5, 0, 0.5, 0.5, 0.5, 0;
            break;
        case 'R':
            mat << 2 * dfThird, dfThird, dfThird, -dfThird, dfThird, dfThird, -dfThird, -2 * dfThird, dfThird;
            break;
        default:
            break;
    }
    return mat;
}

/// The differences of two cells: per cent of the worst edge, degrees of the worst angle.
std::array<double, 2> differences(const CellParameters& first, const CellParameters& second)
{
    std::array<double, 2> adf = {0, 0};
    const std::array<double, 6> aFirst = first.numbers(), aSecond = second.numbers();
    for (size_t n = 0; n < 3; ++n) {
        const double dfMean = (aFirst[n] + aSecond[n]) / 2;
        adf[0] = std::max(adf[0], 100 * std::abs(aFirst[n] - aSecond[n]) / dfMean);
        adf[1] = std::max(adf[1], std::abs(aFirst[n + 3] - aSecond[n + 3]));
    }
    return adf;
}

/// All matrices of -1, 0 and 1 with determinant 1.
std::vector<Eigen::Matrix3i> makeSmallMatrices()
{
    std::vector<Eigen::Matrix3i> list;
    const int nMatrices = 19683;  // 3 to the 9th
    for (int nCode = 0; nCode < nMatrices; ++nCode) {
        Eigen::Matrix3i mat;
        int nRest = nCode;
        for (int n = 0; n < 9; ++n) {
            mat(n / 3, n % 3) = nRest % 3 - 1;
            nRest /= 3;
        }
        if (mat.determinant() == 1) {
            list.push_back(mat);
        }
    }
    return list;
}

const std::vector<Eigen::Matrix3i>& smallMatrices()
{
    static const std::vector<Eigen::Matrix3i> list = makeSmallMatrices();
    return list;
}

std::vector<CellSetting> allSettings(const LatticeBasis& from, const LatticeBasis& to,
                                     const CellTolerance& tolerance)
{
    const CellParameters cellTo = cellOf(to);
    std::vector<CellSetting> list;
    for (const Eigen::Matrix3i& mat : smallMatrices()) {
        const std::array<double, 2> adf = differences(cellOf(mat.cast<double>() * from), cellTo);
        if (adf[0] <= tolerance.dfLengths && adf[1] <= tolerance.dfAngles) {
            list.push_back({mat, adf[0], adf[1]});
        }
    }
    return list;
}

}  // namespace

double CellSetting::misfit() const
{
    const CellTolerance tolerance;
    return std::max(dfLengths / tolerance.dfLengths, dfAngles / tolerance.dfAngles);
}

LatticeBasis directBasisOf(const CellParameters& cell)
{
    LatticeBasis basis = LatticeBasis::Zero();
    const std::optional<gemmi::UnitCell> unitCell = unitCellOf(cell);
    for (int n = 0; unitCell && n < 3; ++n) {
        const gemmi::Vec3 axis = unitCell->orthogonalize(gemmi::Fractional(n == 0, n == 1, n == 2));
        basis.row(n) << axis.x, axis.y, axis.z;
    }
    return basis;
}

ReducedCell reducedCell(const CellParameters& cell, char chCentring)
{
    ReducedCell reduced;
    reduced.basis.setZero();
    reduced.matIndices.setIdentity();
    const LatticeBasis basis = directBasisOf(cell);
    if (basis.isZero()) {
        return reduced;
    }
    const LatticeBasis niggli = niggliBasis(primitiveAxes(chCentring) * basis);
    if (niggli.isZero()) {
        return reduced;
    }
    // An axis is a sum of the given ones, and its index the same sum of theirs.
    reduced.matIndices = niggli * basis.inverse();
    reduced.basis = niggli;
    reduced.cell = cellOf(niggli);
    return reduced;
}

std::vector<CellSetting> settingsBetween(const LatticeBasis& from, const LatticeBasis& to,
                                         const CellTolerance& tolerance)
{
    std::vector<CellSetting> list = allSettings(from, to, tolerance);
    std::stable_sort(list.begin(), list.end(), [](const CellSetting& first, const CellSetting& second) {
        return first.misfit() < second.misfit();
    });
    return list;
}

double latticeDistance(const LatticeBasis& first, const LatticeBasis& second, const CellTolerance& tolerance)
{
    double dfLeast = g_dfFarApart;
    const CellTolerance wide = {tolerance.dfLengths * g_dfFarApart, tolerance.dfAngles * g_dfFarApart};
    for (const CellSetting& setting : allSettings(first, second, wide)) {
        dfLeast = std::min(dfLeast, std::max(setting.dfLengths / tolerance.dfLengths,
                                             setting.dfAngles / tolerance.dfAngles));
    }
    return dfLeast;
}

}  // namespace tessera
