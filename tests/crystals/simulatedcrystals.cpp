#include "tests/crystals/simulatedcrystals.h"

#include "crystals/cellsettings.h"
#include "records/pi.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace tessera {

CCompound::CCompound(const CellParameters& cell, const char* szHall, double dfDMin, unsigned nSeed)
    : m_cell(cell), m_matReciprocal(directBasisOf(cell).inverse()), m_unit(gemmi::symops_from_hall(szHall))
{
    std::mt19937 random(nSeed);
    const double dfB = 3;
    const int nMost = int(std::max({cell.a, cell.b, cell.c}) / dfDMin) + 1;
    for (int h = -nMost; h <= nMost; ++h) {
        for (int k = -nMost; k <= nMost; ++k) {
            for (int l = -nMost; l <= nMost; ++l) {
                const std::array<int, 3> an = {h, k, l};
                if ((h == 0 && k == 0 && l == 0) || dStar(an) > 1 / dfDMin || m_unit.isAbsent(an)) {
                    continue;
                }
                m_listIndex.push_back(an);
                if (m_mapIntensity.count(representative(an)) == 0) {
                    const double dfUniform = (random() + 0.5) / 4294967296.0;
                    m_mapIntensity[representative(an)] = -std::log(dfUniform) * 1000 *
                                                         std::exp(-dfB * dStar(an) * dStar(an) / 2);
                }
            }
        }
    }
}

double CCompound::intensity(const std::array<int, 3>& anIndex) const
{
    return m_mapIntensity.at(representative(anIndex));
}

double CCompound::dStar(const std::array<int, 3>& anIndex) const
{
    return (m_matReciprocal * Eigen::Vector3d(anIndex[0], anIndex[1], anIndex[2])).norm();
}

Crystal simulatedCrystal(const CCompound& compound, const CrystalTruth& truth, std::mt19937& random)
{
    std::normal_distribution<double> normal;
    const Eigen::Vector3d axis = Eigen::Vector3d(normal(random), normal(random), normal(random)).normalized();
    const Eigen::Vector3d first = axis.unitOrthogonal(), second = axis.cross(first);
    const double dfSpread = 1 + 0.004 * normal(random);  // of the camera's length
    Crystal crystal;
    // New axes are the inverse transpose of nothing: they transform as the indices do.
    CellParameters cell = cellOf(truth.matIndices.cast<double>() * directBasisOf(compound.cell()));
    cell.a *= dfSpread;
    cell.b *= dfSpread;
    cell.c *= dfSpread;
    crystal.cell = cell;
    crystal.strLaueClass = QStringLiteral("-1");
    crystal.dfWavelength = 0.0251;
    std::vector<std::array<int, 3>> listIndex = compound.indices();
    std::shuffle(listIndex.begin(), listIndex.end(), random);
    for (const std::array<int, 3>& an : listIndex) {
        const Eigen::Vector3d vec = compound.reciprocal() * Eigen::Vector3d(an[0], an[1], an[2]);
        const double dfAngle = std::atan2(vec.dot(second), vec.dot(first)) * 180 / g_dfPi;
        if (dfAngle < 0 || dfAngle > truth.dfWedge || crystal.listIntensity.size() >= truth.nMost) {
            continue;
        }
        const double dfSquare = vec.squaredNorm() / 4;
        const double dfTrue = compound.intensity(an);
        const double dfFactor = truth.dfScale * std::exp(-2 * truth.dfB * dfSquare);
        const double dfSigma = truth.dfNoise * (dfTrue + 50);
        const Eigen::Vector3i vecNew = truth.matIndices * Eigen::Vector3i(an[0], an[1], an[2]);
        crystal.listIntensity.push_back({{vecNew[0], vecNew[1], vecNew[2]},
                                         (dfTrue + dfSigma * normal(random)) * dfFactor,
                                         dfSigma * dfFactor});
    }
    return crystal;
}

}  // namespace tessera
