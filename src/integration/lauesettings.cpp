#include "integration/lauesettings.h"

#include "integration/asymmetricunit.h"
#include "integration/unitcell.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace tessera {

namespace {

LatticeBasis basisOf(const CellParameters& cell)
{
    const std::optional<gemmi::UnitCell> unitCell = unitCellOf(cell);
    if (!unitCell) {
        return LatticeBasis::Zero();
    }
    LatticeBasis basis;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int n = 0; n < 3; ++n) {
            basis(nRow, n) = unitCell->orth.mat[n][nRow];
        }
    }
    return basis;
}

/// Rows: axes of a primitive cell in terms of the conventional axes.
Eigen::Matrix3d primitiveRows(char chCentring)
{
    Eigen::Matrix3d mat = Eigen::Matrix3d::Identity();
    const double dfThird = 1.0 / 3;
    switch (chCentring) {
        case 'C':
            mat << .5, .5, 0, -.5, .5, 0, 0, 0, 1;
            break;
        case 'I':
            mat << -.5, .5, .5, .5, -.5, .5, .5, .5, -.5;
            break;
        case 'F':
            mat << 0, .5, .5, .5, 0, .5, .5, .5, 0;
            break;
        case 'R':
            mat << 2 * dfThird, dfThird, dfThird, -dfThird, dfThird, dfThird, -dfThird, -2 * dfThird, dfThird;
            break;
        default:
            break;
    }
    return mat;
}

/// The matrix as whole numbers over the smallest common denominator, which is at most 6 for all centrings.
ObservationSymmetry symmetryOf(const Eigen::Matrix3d& matRows)
{
    ObservationSymmetry symmetry;
    for (const int nDenominator : {1, 2, 3, 4, 6}) {
        const Eigen::Matrix3d mat = nDenominator * matRows;
        if ((mat - mat.array().round().matrix()).cwiseAbs().maxCoeff() < 0.02 || nDenominator == 6) {
            symmetry.nDenominator = nDenominator;
            for (int nRow = 0; nRow < 3; ++nRow) {
                for (int n = 0; n < 3; ++n) {
                    symmetry.anTransform[nRow][n] = int(std::lround(mat(nRow, n)));
                }
            }
            break;
        }
    }
    return symmetry;
}

struct ClassName {
    const char* pszClass;
    const char* pszGroup;  ///< Hermann–Mauguin symbol without the centring letter
};

std::vector<ClassName> classesOf(LatticeSystem system)
{
    switch (system) {
        case LatticeSystem::Monoclinic:
            return {{"2/m", "1 2/m 1"}};
        case LatticeSystem::Orthorhombic:
            return {{"mmm", "m m m"}};
        case LatticeSystem::Tetragonal:
            return {{"4/mmm", "4/m m m"}, {"4/m", "4/m"}};
        case LatticeSystem::Rhombohedral:
            return {{"-3m", "-3 m:H"}, {"-3", "-3:H"}};
        case LatticeSystem::Hexagonal:
            return {
                {"6/mmm", "6/m m m"}, {"6/m", "6/m"}, {"-3m1", "-3 m 1"}, {"-31m", "-3 1 m"}, {"-3", "-3"}};
        case LatticeSystem::Cubic:
            return {{"m-3m", "m -3 m"}, {"m-3", "m -3"}};
        default:
            return {{"-1", "-1"}};
    }
}

Eigen::Matrix3d transposedRotation(const gemmi::Op& op)
{
    const gemmi::Op::Rot rot = wholeRotation(op.rot);
    Eigen::Matrix3d mat;
    for (int nRow = 0; nRow < 3; ++nRow) {
        for (int n = 0; n < 3; ++n) {
            mat(nRow, n) = rot[n][nRow];
        }
    }
    return mat;
}

/// @param matFromPrimitive  rows: conventional axes in terms of the primitive ones
LaueSetting settingOf(const ClassName& name, const LatticeSymmetry& lattice,
                      const Eigen::Matrix3d& matFromPrimitive, const Eigen::Matrix3d& matFromForce)
{
    LaueSetting setting;
    setting.strClass = QLatin1String(name.pszClass);
    setting.symmetry = symmetryOf(matFromForce);
    setting.symmetry.ops =
        gemmi::get_spacegroup_by_name(std::string(1, lattice.chCentring) + " " + name.pszGroup).operations();
    setting.cell = lattice.cellConstrained;
    setting.system = lattice.system;
    setting.chCentring = lattice.chCentring;
    const Eigen::Matrix3d matInverse = matFromPrimitive.inverse();
    for (const gemmi::Op& op : setting.symmetry.ops.sym_ops) {
        if (op.det_rot() > 0) {
            const Eigen::Matrix3d mat = matInverse * transposedRotation(op) * matFromPrimitive;
            setting.listRotation.push_back(mat.array().round().matrix().cast<int>());
            setting.listConventional.push_back(op);
        }
    }
    return setting;
}

/// The Laue class -1 in the cell in force.
LaueSetting plainSetting(const CellParameters& cell)
{
    LaueSetting setting;
    setting.strClass = QStringLiteral("-1");
    setting.symmetry.ops = gemmi::symops_from_hall("-P 1");
    setting.cell = cell;
    setting.listRotation = {Eigen::Matrix3i::Identity()};
    setting.listConventional = {setting.symmetry.ops.sym_ops.front()};
    return setting;
}

}  // namespace

LaueSettings laueSettings(const std::vector<LatticeType>& listType, const CellParameters& cellInForce)
{
    LaueSettings settings;
    Eigen::Matrix3d matPrimitive = Eigen::Matrix3d::Identity();
    std::set<QString> setSymbol;
    int nMostRotations = 24;
    if (!listType.empty()) {
        const LatticeType& highest = listType.front();
        matPrimitive = primitiveRows(highest.symmetry.chCentring) * highest.matTransform;
        nMostRotations = highest.symmetry.nRotations;
        for (const LatticeType& type : listType) {
            setSymbol.insert(bravaisSymbol(type.symmetry));
        }
    }
    settings.primitive = symmetryOf(matPrimitive);
    settings.primitive.ops = gemmi::symops_from_hall("-P 1");
    const LatticeBasis basis = matPrimitive * basisOf(cellInForce);
    for (const LatticeSymmetry& lattice : latticeSymmetries(basis)) {
        const bool bKnown = setSymbol.empty() || setSymbol.count(bravaisSymbol(lattice)) > 0;
        if (lattice.nRotations > nMostRotations || (lattice.nRotations == nMostRotations && !bKnown)) {
            continue;
        }
        const Eigen::Matrix3d matFromPrimitive = lattice.matTransform.cast<double>();
        for (const ClassName& name : classesOf(lattice.system)) {
            settings.listSetting.push_back(
                settingOf(name, lattice, matFromPrimitive, matFromPrimitive * matPrimitive));
        }
    }
    std::stable_sort(settings.listSetting.begin(), settings.listSetting.end(),
                     [](const LaueSetting& one, const LaueSetting& other) {
                         return one.listRotation.size() > other.listRotation.size();
                     });
    if (settings.listSetting.empty()) {
        settings.listSetting.push_back(plainSetting(cellInForce));
    }
    return settings;
}

}  // namespace tessera
