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
    double dfForetoldR = 0;    ///< the R that the sigmas foretell for a true operation
    double dfExpected = 0;     ///< the correlation that the sigmas foretell for a true operation
};

/// Intensities merged in -1, normalized by resolution to E², ready to be compared.
class CRotationAgreement {
public:
    /// @param primitive  to the primitive cell, in -1
    CRotationAgreement(const std::vector<Observation>& listObservation, const ObservationSymmetry& primitive);

    /// The correlation is one of weights 1 / ((1 + var1) (1 + var2)), the variances being those of the
    /// measurement against the 1 of acentric E².
    /// @param matRotation  on columns of indices of the primitive cell
    RotationAgreement agreement(const Eigen::Matrix3i& matRotation) const;

private:
    struct Reflection {
        std::array<int, 3> anIndex = {};
        double dfIntensity = 0;
        double dfSigma = 0;
        double dfSquare = 0;    ///< E²
        double dfVariance = 0;  ///< of E²
    };
    const Reflection* find(const std::array<int, 3>& anIndex) const;

    std::vector<Reflection> m_listReflection;
    std::unordered_map<std::uint64_t, int> m_mapPlace;
};

}  // namespace tessera
