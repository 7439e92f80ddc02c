#include "lattice/cosettable.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tessera {

void CosetWindow::add(const Eigen::Vector3d& off, double dfWindow)
{
    const Eigen::Array<bool, 3, 1> bFar = off.array().abs() >= dfWindow;
    const auto nFar = bFar.count();
    ++(nFar == 0 ? nInside : nAround);
    for (int n = 0; n < 3 && nFar == 1; ++n) {
        anSide[n] += bFar[n] ? 1 : 0;
    }
}

double CosetWindow::byChance() const
{
    const double dfWindowOfSurroundings = 8.0 / 19;
    const double dfWindowOfSides = 2;
    return std::max(dfWindowOfSurroundings * nAround,
                    dfWindowOfSides * *std::max_element(anSide.begin(), anSide.end()));
}

CCosetTable::CCosetTable(int nDenominator)
    : m_nDenominator(nDenominator), m_vecCoset(size_t(nDenominator * nDenominator * nDenominator), -1)
{
    for (int n = 1; n < int(m_vecCoset.size()); ++n) {
        const IndexTriple an = {n / (nDenominator * nDenominator), n / nDenominator % nDenominator,
                                n % nDenominator};
        const int nCommon = std::gcd(std::gcd(an[0], an[1]), std::gcd(an[2], nDenominator));
        if (nCommon != 1 || m_vecCoset[n] >= 0) {
            continue;
        }
        for (int m = 1; m < nDenominator; ++m) {
            if (std::gcd(m, nDenominator) == 1) {
                m_vecCoset[place({m * an[0], m * an[1], m * an[2]})] = int(m_listFirst.size());
            }
        }
        m_listFirst.push_back(an);
    }
}

int CCosetTable::multiples() const
{
    return int(std::count(m_vecCoset.begin(), m_vecCoset.end(), 0));
}

size_t CCosetTable::place(const IndexTriple& an) const
{
    const int nRow = modulo(an[0], m_nDenominator) * m_nDenominator + modulo(an[1], m_nDenominator);
    const int nPlace = nRow * m_nDenominator + modulo(an[2], m_nDenominator);
    return size_t(nPlace);
}

std::pair<IndexTriple, Eigen::Vector3d> nextCoset(const Eigen::Vector3d& index, int nDenominator)
{
    const Eigen::Vector3d multiple = nDenominator * index;
    const Eigen::Vector3d whole = multiple.array().round();
    return {{int(whole.x()), int(whole.y()), int(whole.z())}, (multiple - whole) / nDenominator};
}

std::vector<Eigen::Vector3d> realIndices(const LatticeBasis& basis, const LatticePoints& listPoint)
{
    const double dfMost = 1e6;
    std::vector<Eigen::Vector3d> listIndex;
    listIndex.reserve(listPoint.size());
    for (const Eigen::Vector3d& point : listPoint) {
        const Eigen::Vector3d index = basis * point;
        if (index.allFinite() && index.cwiseAbs().maxCoeff() < dfMost) {
            listIndex.push_back(index);
        }
    }
    return listIndex;
}

Eigen::Matrix3d latticeOfMultiples(const IndexTriple& anForm, int nDenominator)
{
    const auto fits = [&](int x, int y, int z) {
        return modulo(x * anForm[0] + y * anForm[1] + z * anForm[2], nDenominator) == 0;
    };
    Eigen::Matrix3d matRows = Eigen::Matrix3d::Zero();
    int nZ = 1;
    while (!fits(0, 0, nZ)) {
        ++nZ;
    }
    matRows(2, 2) = nZ;
    int nY = 0;
    for (bool bFound = false; !bFound;) {
        ++nY;
        for (int z = 0; z < nZ && !bFound; ++z) {
            bFound = fits(0, nY, z);
            matRows.row(1) << 0, nY, z;
        }
    }
    int nX = 0;
    for (bool bFound = false; !bFound;) {
        ++nX;
        for (int n = 0; n < nY * nZ && !bFound; ++n) {
            const int y = n / nZ;
            const int z = n % nZ;
            bFound = fits(nX, y, z);
            matRows.row(0) << nX, y, z;
        }
    }
    return matRows;
}

}  // namespace tessera
