// Rotation likelihood: what the agreement of all rotations of a lattice says of a group of them.
#pragma once

#include "integration/rotationagreement.h"

#include <vector>

namespace tessera {

/// The likelihoods of groups of rotations by their correlations.
///
/// After Evans (2006), Acta Cryst. D62, 72–82, appendix A: the correlation of a rotation that the crystal has
/// lies about an expected one; that of one which it has not lies about a true one anywhere from 0 to 1, less
/// often near 1. Two things differ from there, as electrons scatter several times. What is expected is one
/// number for all rotations of a group, which may be anything below what the sigmas foretell, less likely by
/// a factor e for each 0.1: multiple scattering brings a garnet to 0.7, but all its rotations alike, while a
/// pseudo-symmetry is known by rotations that agree worse than the others. And the peaks are Student's
/// distributions with three degrees of freedom, 1.5 / sqrt(pairs) wide and 0.06 at least, as the tails of a
/// Lorentzian would let it pass.
class CRotationLikelihood {
public:
    explicit CRotationLikelihood(const std::vector<RotationAgreement>& listAgreement);

    /// @param listHaving  for each rotation of the constructor, whether the group has it
    double logarithm(const std::vector<bool>& listHaving) const;

private:
    struct Rotation {
        bool bKnown = false;
        double dfLogOfLacking = 0;
        std::vector<double> listLogOfHaving;  ///< for each expected correlation
    };
    std::vector<Rotation> m_listRotation;
    std::vector<double> m_listPrior;  ///< of each expected correlation
};

}  // namespace tessera
