#include "simulate/structurefactor.h"

#include "simulate/angles.h"
#include "simulate/scatteringfactors.h"

#include <algorithm>

namespace tessera {

namespace {

// Special positions give the same atom by several operations.
bool isSamePlace(const Vector3& a, const Vector3& b)
{
    for (int i = 0; i < 3; ++i) {
        const double df = a[i] - b[i];
        if (std::abs(df - std::round(df)) > 1e-3) {
            return false;
        }
    }
    return true;
}
}  // namespace

Matrix3 reciprocalBasisOfCell(const std::array<double, 6>& adfCell)
{
    const double dfCosAlpha = std::cos(radians(adfCell[3])), dfCosBeta = std::cos(radians(adfCell[4]));
    const double dfCosGamma = std::cos(radians(adfCell[5])), dfSinGamma = std::sin(radians(adfCell[5]));
    // Direct basis with a along x and b in the x-y plane; its inverse is the reciprocal basis.
    const double dfX = dfCosBeta, dfY = (dfCosAlpha - dfCosBeta * dfCosGamma) / dfSinGamma;
    const Matrix3 matDirect{Vector3{adfCell[0], 0, 0},
                            Vector3{adfCell[1] * dfCosGamma, adfCell[1] * dfSinGamma, 0},
                            adfCell[2] * Vector3{dfX, dfY, std::sqrt(1 - dfX * dfX - dfY * dfY)}};
    return transposed(inverseOf(matDirect));
}

std::array<double, 6> cellOfReciprocalBasis(const Matrix3& matBasis)
{
    const Matrix3 matDirect = transposed(inverseOf(matBasis));
    std::array<double, 6> adfCell{};
    for (int i = 0; i < 3; ++i) {
        const Vector3& vecB = matDirect[(i + 1) % 3];
        const Vector3& vecC = matDirect[(i + 2) % 3];
        adfCell[i] = lengthOf(matDirect[i]);
        adfCell[3 + i] = degrees(std::acos(dotProduct(vecB, vecC) / (lengthOf(vecB) * lengthOf(vecC))));
    }
    return adfCell;
}

CStructureFactor::CStructureFactor(const CrystalStructure& structure, double dfDisplacement)
    : m_listOperation(closeGroup(structure.listGenerator)),
      m_matBasis(reciprocalBasisOfCell(structure.adfCell)),
      m_dfDisplacement(dfDisplacement)
{
    for (const AtomSite& site : structure.listSite) {
        std::vector<Vector3> listOrbit;
        for (const gemmi::Op& operation : m_listOperation) {
            const Vector3 vec = applyOperation(operation, {site.dfX, site.dfY, site.dfZ});
            if (std::none_of(listOrbit.begin(), listOrbit.end(),
                             [&](const Vector3& vecOld) { return isSamePlace(vec, vecOld); })) {
                listOrbit.push_back(vec);
            }
        }
        auto it = std::find_if(m_listElement.begin(), m_listElement.end(),
                               [&](const Element& element) { return element.strElement == site.strElement; });
        if (it == m_listElement.end()) {
            it = m_listElement.insert(it, {site.strElement, {}});
        }
        it->listPosition.insert(it->listPosition.end(), listOrbit.begin(), listOrbit.end());
    }
}

int CStructureFactor::atomCount() const
{
    size_t n = 0;
    for (const Element& element : m_listElement) {
        n += element.listPosition.size();
    }
    return int(n);
}

std::complex<double> CStructureFactor::value(int nH, int nK, int nL) const
{
    const Vector3 vecIndex{double(nH), double(nK), double(nL)};
    const double dfS = lengthOf(vecIndex * m_matBasis) / 2;  // sin(theta)/lambda = d*/2
    std::complex<double> sum = 0;
    for (const Element& element : m_listElement) {
        std::complex<double> phases = 0;
        for (const Vector3& vec : element.listPosition) {
            phases += std::polar(1.0, 2 * g_dfPi * dotProduct(vecIndex, vec));
        }
        sum += electronScatteringFactor(element.strElement, dfS) * phases;
    }
    return sum * std::exp(-m_dfDisplacement * dfS * dfS);
}

std::vector<Reflection> CStructureFactor::reflections(double dfMaxDStar) const
{
    // |h| = |g·a| <= |g| |a|
    const std::array<double, 6> adfCell = cellOfReciprocalBasis(m_matBasis);
    const int nMaxH = int(dfMaxDStar * adfCell[0]), nMaxK = int(dfMaxDStar * adfCell[1]),
              nMaxL = int(dfMaxDStar * adfCell[2]);
    std::vector<Reflection> listAll;
    double dfStrongest = 0;
    for (int h = -nMaxH; h <= nMaxH; ++h) {
        for (int k = -nMaxK; k <= nMaxK; ++k) {
            for (int l = -nMaxL; l <= nMaxL; ++l) {
                const double dfDStar = lengthOf(Vector3{double(h), double(k), double(l)} * m_matBasis);
                if (dfDStar >= dfMaxDStar || (h == 0 && k == 0 && l == 0)) {
                    continue;
                }
                listAll.push_back({h, k, l, dfDStar, std::norm(value(h, k, l))});
                dfStrongest = std::max(dfStrongest, listAll.back().dfSquareF);
            }
        }
    }
    listAll.erase(std::remove_if(listAll.begin(), listAll.end(),
                                 [&](const Reflection& r) { return r.dfSquareF <= 1e-9 * dfStrongest; }),
                  listAll.end());
    return listAll;
}

}  // namespace tessera
