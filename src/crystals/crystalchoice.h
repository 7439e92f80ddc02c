// Crystal choice: what each crystal does to the agreement of all, and which of them lowers it.
#pragma once

#include "integration/equivalents.h"
#include "integration/observation.h"

#include <vector>

namespace tessera {

/// CC1/2 (see CAgreement) of all observations, and without those of one crystal. An observation's crystal is
/// its first frame. The sums of each group are made once, so that all crystals cost no more than a few
/// mergings.
class CLeaveOneOut {
public:
    CLeaveOneOut(const std::vector<Observation>& listObservation, const EquivalentGroups& groups,
                 int nCrystals);

    /// Not finite below three groups of two and more.
    double ccHalf() const { return ccHalf(m_all); }
    double ccHalfWithout(int nCrystal) const;
    /// Fisher's z of all less that without the crystal, which is half the difference of the logarithms of (1
    /// + CC) / (1 - CC), and its standard error: that of a sum over reflections, as which differ in what they
    /// add. Not finite where one of both is not.
    struct Gain {
        double dfGain = 0;
        double dfError = 0;
    };
    Gain gainOf(int nCrystal) const;

private:
    struct Sums {  ///< of one group, intensities counted from its mean
        int nObserved = 0;
        double dfMean = 0;
        double dfWeight = 0;
        double dfWeighted = 0;
        double dfSquares = 0;
    };
    struct Totals {
        int nGroups = 0;  ///< of two observations and more
        double dfMeans = 0;
        double dfSquares = 0;
        double dfScatter = 0;  ///< variances of the means
    };
    struct Part {  ///< what a crystal has of a group
        int nGroup = 0;
        int nObserved = 0;
        double dfWeight = 0;
        double dfWeighted = 0;
        double dfSquares = 0;
    };
    struct Variances {
        double dfOfMeans = 0;  ///< of the mean intensities of the groups
        double dfHalf = 0;     ///< mean of those of the mean of each
    };
    void add(const Sums& sums, int nSign, Totals& totals) const;
    void addChange(const Part& part, Totals& totals) const;
    static Variances variancesOf(const Totals& totals);
    static double ccHalf(const Totals& totals);

    std::vector<Sums> m_listSums;
    std::vector<std::vector<Part>> m_listParts;  ///< of each crystal, by group
    double m_dfMiddle = 0;                       ///< of the means, from which they are counted
    Totals m_all;
};

/// Observations as normalized amplitudes E against the mean of their resolution, with the sign of the
/// intensity, and with their sigmas; what belongs to no group has sigma 0. A few strong reflections rule the
/// agreement of intensities, so that it tells little of the crystal that measured them badly by chance.
std::vector<Observation> amplitudesOf(const std::vector<Observation>& listObservation,
                                      const EquivalentGroups& groups);

/// The crystal that lowers CC1/2 by more than can be chance; -1: none. Without it z must rise by 0.01 at
/// least, by more than the usual crystal adds to it, and by three of its standard errors, and its gain must
/// lie three standard deviations below the usual one, by the median of the deviations. Of three crystals or
/// fewer none is chosen. Source: Assmann, Brehm & Diederichs (2016), J. Appl. Cryst. 49, 1021–1028, for the
/// criterion itself.
/// @param listGain  what is not finite takes no part
int harmfulCrystal(const std::vector<CLeaveOneOut::Gain>& listGain);

}  // namespace tessera
