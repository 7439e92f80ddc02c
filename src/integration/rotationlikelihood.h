// Rotation likelihood: what the agreement of all rotations of a lattice says of a group of them.
#pragma once

#include "integration/rotationagreement.h"

#include <vector>

namespace tessera {

/// The likelihoods of groups of rotations by their correlations and R values.
///
/// After Evans (2006), Acta Cryst. D62, 72–82, appendix A: the correlation of a rotation that the crystal has
/// lies about an expected one; that of one which it has not lies about a true one anywhere from 0 to 1, less
/// often near 1. Two things differ from there, as electrons scatter several times. What is expected is one
/// number for all rotations of a group, which may be anything below what the sigmas foretell, less likely by
/// a factor e for each 0.1: multiple scattering brings a garnet to 0.7, but all its rotations alike, while a
/// pseudo-symmetry is known by rotations that agree worse than the others. And the peaks are Student's
/// distributions with three degrees of freedom, 1.5 / sqrt(pairs) wide and 0.06 at least, as the tails of a
/// Lorentzian would let it pass.
///
/// Correlations do not tell 0.93 from 0.99, but R does, 0.2 from 0.01. That of a rotation of the group is
/// what its sigmas foretell and one disagreement for all of the group, of any size on a scale of logarithms,
/// added as squares; that of another has any disagreement of its own from 0 to 1, which is what Wilson's
/// acentric distribution gives for intensities that have nothing in common. Its logarithm has a peak of the
/// same kind, 0.35 wide, a third of the value, and 1.5 / sqrt(pairs) more.
class CRotationLikelihood {
public:
    explicit CRotationLikelihood(const std::vector<RotationAgreement>& listAgreement);

    /// @param listHaving  for each rotation of the constructor, whether the group has it
    double logarithm(const std::vector<bool>& listHaving) const;

private:
    struct Rotation {
        bool bKnown = false;
        double dfLogOfLacking = 0;
        std::vector<double> listLogOfHaving;  ///< for each value that the group may share
    };
    /// A number that the rotations of a group share.
    struct Shared {
        std::vector<double> listPrior;  ///< of each value
        std::vector<Rotation> listRotation;

        double logarithm(const std::vector<bool>& listHaving) const;
    };
    static Shared correlations(const std::vector<RotationAgreement>& listAgreement);
    static Shared disagreements(const std::vector<RotationAgreement>& listAgreement);

    Shared m_correlations;
    Shared m_disagreements;
};

}  // namespace tessera
