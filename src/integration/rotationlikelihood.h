// Rotation likelihood: the probability of a group of rotations, given the agreement under all rotations of
// the lattice.
#pragma once

#include "integration/rotationagreement.h"

#include <vector>

namespace tessera {

/// The likelihoods of groups of rotations by their correlations and R values.
///
/// After Evans (2006), Acta Cryst. D62, 72–82, appendix A: if the crystal has a rotation, its correlation is
/// distributed about an expected value; if not, about a true value anywhere from 0 to 1, less often near 1.
/// Two things differ here because of multiple scattering. First, the expected correlation is one common
/// number for all rotations of a group. It may be anything below the value expected from the sigmas, with a
/// probability that falls by a factor e for each 0.1: multiple scattering lowers the correlation of a garnet
/// to 0.7, but for all its rotations alike, whereas a pseudo-symmetric rotation agrees worse than the others.
/// Second, the distributions are Student's with three degrees of freedom, 1.5 / sqrt(pairs) wide but at least
/// 0.06; the tails of a Lorentzian would accept pseudo-symmetric rotations.
///
/// Correlations hardly distinguish 0.93 from 0.99, but the corresponding R values, 0.2 and 0.01, do. R of a
/// rotation of the group is composed, in squares, of the value expected from the sigmas and a disagreement
/// that all rotations of the group share, uniformly distributed on a logarithmic scale. R of another rotation
/// has a disagreement of its own from 0 to 1, the value that Wilson's acentric distribution gives for
/// unrelated intensities. The logarithm of R has a distribution of the same kind, 0.35 (a third of the value)
/// plus 1.5 / sqrt(pairs) wide.
class CRotationLikelihood {
public:
    /// @param listAgreement  one for each rotation of the lattice
    explicit CRotationLikelihood(const std::vector<RotationAgreement>& listAgreement);

    /// The logarithm of the likelihood of a group of rotations.
    /// @param listHaving  for each rotation of the constructor, whether it belongs to the group
    double logarithm(const std::vector<bool>& listHaving) const;

private:
    struct Rotation {
        bool bKnown = false;
        double dfLogOfLacking = 0;
        std::vector<double> listLogOfHaving;  ///< for each possible value of the shared quantity
    };
    /// A quantity that all rotations of a group share.
    struct Shared {
        std::vector<double> listPrior;  ///< prior probability of each possible value
        std::vector<Rotation> listRotation;

        double logarithm(const std::vector<bool>& listHaving) const;
    };
    static Shared correlations(const std::vector<RotationAgreement>& listAgreement);
    static Shared disagreements(const std::vector<RotationAgreement>& listAgreement);

    Shared m_correlations;
    Shared m_disagreements;
};

}  // namespace tessera
