// Rotation agreement: the agreement of intensities that a rotation of the lattice relates.
#pragma once

#include "integration/observation.h"
#include "integration/scaling.h"

#include <Eigen/Dense>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace tessera {

/// The agreement of intensities under one rotation.
struct RotationAgreement {
    int nPairs = 0;            ///< pairs of related reflections
    double dfCorrelation = 0;  ///< correlation of E²; not finite with fewer than ten pairs
    double dfR = 0;            ///< 2 sum |I1 - I2| / sum (I1 + I2); not finite with fewer than ten pairs
    double dfForetoldR = 0;    ///< R expected from the sigmas if the crystal has the rotation
    double dfExpected = 0;     ///< correlation expected from the sigmas if the crystal has the rotation
};

/// Intensities merged in the Laue class -1 and normalized to E², for comparison under rotations.
class CRotationAgreement {
public:
    /// @param primitive  transforms the indices to the primitive cell; its class is -1
    CRotationAgreement(const std::vector<Observation>& listObservation, const ObservationSymmetry& primitive);

    /// The agreement under a rotation. In the correlation, pairs have the weight 1 / ((1 + var1) (1 + var2)),
    /// where the variances are those of the measured E² and 1 is the variance of acentric E².
    /// @param matRotation  acts on columns of indices of the primitive cell
    RotationAgreement agreement(const Eigen::Matrix3i& matRotation) const;

private:
    struct Reflection {
        std::array<int, 3> anIndex = {};
        double dfIntensity = 0;
        double dfSigma = 0;
        double dfSquare = 0;    ///< E²
        double dfVariance = 0;  ///< variance of E² due to the measurement
    };
    const Reflection* find(const std::array<int, 3>& anIndex) const;

    std::vector<Reflection> m_listReflection;
    std::unordered_map<std::uint64_t, int> m_mapPlace;
};

}  // namespace tessera
