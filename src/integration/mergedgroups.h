// MergedGroup: the mean of equivalent observations and the sums that their agreement is told from.
#pragma once

#include "integration/equivalents.h"

#include <limits>
#include <vector>

namespace tessera {

/// One unique reflection with how its observations lie about its mean.
struct MergedGroup {
    double dfIntensity = 0;  ///< mean, weighted by 1 / sigma²
    double dfSigma = 0;      ///< 1 / sqrt(sum of the weights); of three observations and more that of their
                             ///< scatter where it is greater
    int nObserved = 0;
    double dfDeviations = 0;   ///< sum |I - mean|
    double dfIntensities = 0;  ///< sum I
    double dfScatter = 0;      ///< variance of the mean by the scatter of its observations; 0 of a single one
};

/// One for each group, with its corrected intensities and sigmas.
std::vector<MergedGroup> mergeGroups(const std::vector<Observation>& listObservation,
                                     const EquivalentGroups& groups);

/// What the agreement of many groups is told from.
///
/// Rint (Rmerge) = Σ Σ |I - mean| / Σ Σ I, Rmeas with sqrt(n / (n - 1)) and Rpim with sqrt(1 / (n - 1))
/// before the deviations of each group, all over groups of two and more, the mean being weighted by 1 /
/// sigma² as in SHELXL. Sources: Diederichs & Karplus (1997), Nat. Struct. Biol. 4, 269–275; Weiss (2001), J.
/// Appl. Cryst. 34, 130–135.
///
/// CC1/2 by the sigma-tau method, which is what halves made at random come to in the mean:
/// (s² - e/2) / (s² + e/2), with the variance s² of the mean intensities and the mean e of the variances of
/// the mean of half a group, means and scatter being weighted by 1 / sigma² as what is merged: frames that
/// show little count little. Source: Assmann, Brehm & Diederichs (2016), J. Appl. Cryst. 49, 1021–1028.
class CAgreement {
public:
    void add(const MergedGroup& group);

    int observedCount() const { return m_nObserved; }
    int uniqueCount() const { return m_nUnique; }
    double rInt() const { return ratio(m_dfDeviations, m_dfIntensities); }
    double rMeas() const { return ratio(m_dfMeas, m_dfIntensities); }
    double rPim() const { return ratio(m_dfPim, m_dfIntensities); }
    /// Not finite below three groups of two and more.
    double ccHalf() const;
    double meanIOverSigma() const { return ratio(m_dfIOverSigma, m_nUnique); }
    double multiplicity() const { return ratio(m_nObserved, m_nUnique); }

private:
    /// Not finite where there is nothing to divide by, or less than nothing.
    static double ratio(double dfAbove, double dfBelow)
    {
        return dfBelow > 0 ? dfAbove / dfBelow : std::numeric_limits<double>::quiet_NaN();
    }

    int m_nObserved = 0;
    int m_nUnique = 0;
    int m_nSeveral = 0;  ///< groups of two and more
    double m_dfDeviations = 0;
    double m_dfMeas = 0;
    double m_dfPim = 0;
    double m_dfIntensities = 0;
    double m_dfIOverSigma = 0;
    double m_dfMean = 0;     ///< of the means, running (Welford)
    double m_dfSquares = 0;  ///< of the deviations from it
    double m_dfHalfVariance = 0;
};

}  // namespace tessera
