#include "simulate/supercell.h"

#include <algorithm>

namespace tessera {

namespace {
// |F|² of a reflection of the supercell.
double squareF(const CStructureFactor& crystal, const Supercell& supercell, const Reflection& reflection)
{
    const size_t nAxis = size_t(supercell.nAxis);
    const Vector3 vecIndex{double(reflection.nH), double(reflection.nK), double(reflection.nL)};
    double dfSum = 0;
    int nMean = 0;
    for (bool bUpper : {false, true}) {
        Vector3 vec = vecIndex;
        vec[nAxis] = bUpper ? std::ceil(vec[nAxis] / supercell.nMultiple)
                            : std::floor(vec[nAxis] / supercell.nMultiple);
        if (lengthOf(vec) > 0) {
            dfSum += std::norm(crystal.value(int(vec[0]), int(vec[1]), int(vec[2])));
            ++nMean;
        }
    }
    return (supercell.isOfAverage(reflection) ? 1 : supercell.dfOddShare) * dfSum / nMean;
}
}  // namespace

Matrix3 supercellBasis(const Matrix3& matAverage, const Supercell& supercell)
{
    Matrix3 mat = matAverage;
    if (supercell.nMultiple > 1) {
        mat[supercell.nAxis] = (1.0 / supercell.nMultiple) * matAverage[supercell.nAxis];
    }
    return mat;
}

Matrix3 supercellPrimitive(const CStructureFactor& crystal, const Supercell& supercell)
{
    if (supercell.nMultiple == 1) {
        return crystal.primitiveBasis();
    }
    std::vector<gemmi::Op> listKept;
    for (const gemmi::Op& operation : crystal.operations()) {
        if (operation.tran[supercell.nAxis] == 0) {
            listKept.push_back(operation);
        }
    }
    return primitiveIndexBasis(listKept);
}

std::vector<Reflection> supercellReflections(const CStructureFactor& crystal, const Supercell& supercell,
                                             double dfMaxDStar)
{
    std::vector<Reflection> listAll;
    if (supercell.nMultiple == 1) {
        return crystal.reflections(dfMaxDStar);
    }
    // |h| = |g·a| <= |g| |a|
    std::array<double, 6> adfCell = cellOfReciprocalBasis(crystal.reciprocalBasis());
    adfCell[supercell.nAxis] *= supercell.nMultiple;
    const int nMaxH = int(dfMaxDStar * adfCell[0]), nMaxK = int(dfMaxDStar * adfCell[1]),
              nMaxL = int(dfMaxDStar * adfCell[2]);
    double dfStrongest = 0;
    for (int h = -nMaxH; h <= nMaxH; ++h) {
        for (int k = -nMaxK; k <= nMaxK; ++k) {
            for (int l = -nMaxL; l <= nMaxL; ++l) {
                Vector3 vecIndex{double(h), double(k), double(l)};
                vecIndex[supercell.nAxis] /= supercell.nMultiple;
                Reflection reflection{h, k, l, lengthOf(vecIndex * crystal.reciprocalBasis()), 0};
                if (reflection.dfDStar >= dfMaxDStar || (h == 0 && k == 0 && l == 0)) {
                    continue;
                }
                reflection.dfSquareF = squareF(crystal, supercell, reflection);
                listAll.push_back(reflection);
                dfStrongest = std::max(dfStrongest, reflection.dfSquareF);
            }
        }
    }
    listAll.erase(std::remove_if(listAll.begin(), listAll.end(),
                                 [&](const Reflection& r) { return r.dfSquareF <= 1e-9 * dfStrongest; }),
                  listAll.end());
    return listAll;
}

}  // namespace tessera
