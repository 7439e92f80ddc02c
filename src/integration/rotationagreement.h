// Rotation agreement: how well intensities agree with those that a rotation of the lattice takes them to.
#pragma once

#include "integration/observation.h"
#include "integration/scaling.h"

#include <Eigen/Dense>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tessera {

struct RotationAgreement {
    int nPairs = 0;
    double dfCorrelation = 0;  ///< of E²; not finite below ten pairs
    double dfR = 0;            ///< 2 sum |I1 - I2| / sum (I1 + I2); not finite likewise
    double dfExpected = 0;     ///< the correlation that the sigmas foretell for a true operation
};

/// Densities at a correlation: of an operation that the crystal has, and of one that it has not.
///
/// After Evans (2006), Acta Cryst. D62, 72–82, appendix A: a peak about the expected correlation, or about a
/// true one that lies anywhere from 0 to 1, less often near 1. The peak is Student's distribution with three
/// degrees of freedom, 1/sqrt(pairs) wide and 0.05 at least: with tails as long as those of a Lorentzian,
/// correlations of 0.8 as pseudo-symmetry gives them would pass.
struct RotationDensities {
    double dfHaving = 1;
    double dfLacking = 1;
};

/// Of each agreement, 1 and 1 where there are too few pairs. What is expected is what the sigmas foretell;
/// where even the best of all operations is below that, as multiple scattering parts what symmetry makes
/// equal, it is the middle between the two.
std::vector<RotationDensities> rotationDensities(const std::vector<RotationAgreement>& listAgreement);

/// Intensities merged in -1, normalized by resolution to E², ready to be compared.
class CRotationAgreement {
public:
    /// @param primitive  to the primitive cell, in -1
    CRotationAgreement(const std::vector<Observation>& listObservation, const ObservationSymmetry& primitive);

    /// The correlation is one of weights 1 / (1 + var1 + var2), the variances being those of the measurement
    /// against the 1 of acentric E².
    /// @param matRotation  on columns of indices of the primitive cell
    RotationAgreement agreement(const Eigen::Matrix3i& matRotation) const;

private:
    struct Reflection {
        std::array<int, 3> anIndex = {};
        double dfIntensity = 0;
        double dfSquare = 0;    ///< E²
        double dfVariance = 0;  ///< of E²
    };
    const Reflection* find(const std::array<int, 3>& anIndex) const;

    std::vector<Reflection> m_listReflection;
    std::unordered_map<std::uint64_t, int> m_mapPlace;
};

}  // namespace tessera
