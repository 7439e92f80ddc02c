// Simulated crystals: lists of intensities of one true structure, each in a setting, on a scale and with
// errors of its own.
#pragma once

#include "crystals/crystal.h"
#include "integration/asymmetricunit.h"

#include <gemmi/symmetry.hpp>

#include <Eigen/Core>

#include <array>
#include <map>
#include <random>
#include <vector>

namespace tessera {

/// A compound: cell, Laue class and intensities by chance (Wilson's acentric distribution with a fall-off).
class CCompound {
public:
    /// @param szHall  of the Laue class with its centring
    CCompound(const CellParameters& cell, const char* szHall, double dfDMin, unsigned nSeed);

    double intensity(const std::array<int, 3>& anIndex) const;
    /// All indices to the limit, Friedel's mates apart.
    const std::vector<std::array<int, 3>>& indices() const { return m_listIndex; }
    double dStar(const std::array<int, 3>& anIndex) const;
    /// The same for all equivalents.
    std::array<int, 3> representative(const std::array<int, 3>& anIndex) const
    {
        return m_unit.representative(anIndex).anIndex;
    }
    const CellParameters& cell() const { return m_cell; }
    const Eigen::Matrix3d& reciprocal() const { return m_matReciprocal; }

private:
    CellParameters m_cell;
    Eigen::Matrix3d m_matReciprocal;
    CAsymmetricUnit m_unit;
    std::vector<std::array<int, 3>> m_listIndex;
    std::map<std::array<int, 3>, double> m_mapIntensity;
};

struct CrystalTruth {
    Eigen::Matrix3i matIndices = Eigen::Matrix3i::Identity();  ///< from the true indices to the crystal's
    double dfScale = 1;                                        ///< that its intensities were multiplied by
    double dfB = 0;                                            ///< Å², of that scale
    double dfWedge = 60;                                       ///< degrees about a direction by chance
    double dfNoise = 0.1;   ///< relative, and of the mean intensity a tenth of it
    size_t nMost = 100000;  ///< observations
};

/// What a run on a crystal of the compound would leave.
Crystal simulatedCrystal(const CCompound& compound, const CrystalTruth& truth, std::mt19937& random);

}  // namespace tessera
