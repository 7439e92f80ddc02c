#include "simulate/symmetryoperations.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace tessera {

std::vector<gemmi::Op> closeGroup(const QStringList& listGenerator)
{
    std::vector<gemmi::Op> listSeed;
    try {
        for (const QString& strTriplet : listGenerator) {
            listSeed.push_back(gemmi::parse_triplet(strTriplet.toStdString()));
        }
    } catch (const std::runtime_error&) {
        return {};
    }
    // Not by gemmi's GroupOps: the order of the operations is that of the sums over the atoms.
    std::vector<gemmi::Op> listAll{gemmi::Op::identity()};
    // 192 is the largest group with its centring; what grows beyond that is no space group.
    for (size_t i = 0; i < listAll.size() && listAll.size() <= 192; ++i) {
        for (const gemmi::Op& seed : listSeed) {
            const gemmi::Op next = listAll[i] * seed;
            if (std::find(listAll.begin(), listAll.end(), next) == listAll.end()) {
                listAll.push_back(next);
            }
        }
    }
    return listAll.size() <= 192 ? listAll : std::vector<gemmi::Op>();
}

Vector3 applyOperation(const gemmi::Op& operation, const Vector3& vecFractional)
{
    Vector3 vecResult = operation.apply_to_xyz(vecFractional);
    for (double& df : vecResult) {
        df -= std::floor(df);
    }
    return vecResult;
}

Matrix3 primitiveIndexBasis(const std::vector<gemmi::Op>& listOperation)
{
    std::vector<std::array<int, 3>> listCentring;
    for (const gemmi::Op& operation : listOperation) {
        if (operation.rot == gemmi::Op::identity().rot) {
            listCentring.push_back(operation.tran);
        }
    }
    // hkl belongs to the lattice when h·t is whole for every centring translation t. The primitive
    // cell of the reciprocal lattice is as many times the conventional one as there are such t.
    std::vector<Vector3> listPoint;
    for (int h = -3; h <= 3; ++h) {
        for (int k = -3; k <= 3; ++k) {
            for (int l = -3; l <= 3; ++l) {
                const bool bAllowed = std::all_of(
                    listCentring.begin(), listCentring.end(),
                    [&](const auto& t) { return (h * t[0] + k * t[1] + l * t[2]) % gemmi::Op::DEN == 0; });
                if (bAllowed && (h != 0 || k != 0 || l != 0)) {
                    listPoint.push_back({double(h), double(k), double(l)});
                }
            }
        }
    }
    std::stable_sort(listPoint.begin(), listPoint.end(),
                     [](const Vector3& a, const Vector3& b) { return lengthOf(a) < lengthOf(b); });
    const double dfVolume = double(listCentring.size());
    for (size_t i = 0; i < listPoint.size(); ++i) {
        for (size_t j = i + 1; j < listPoint.size(); ++j) {
            for (size_t k = j + 1; k < listPoint.size(); ++k) {
                const Matrix3 mat{listPoint[i], listPoint[j], listPoint[k]};
                const double dfDeterminant = determinantOf(mat);
                if (std::abs(std::abs(dfDeterminant) - dfVolume) < 1e-9) {
                    return dfDeterminant > 0 ? mat : Matrix3{mat[0], mat[2], mat[1]};
                }
            }
        }
    }
    return {Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}};
}

}  // namespace tessera
