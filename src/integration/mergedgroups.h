// MergedGroup: the mean of equivalent observations, and statistics of their agreement.
#pragma once

#include "integration/equivalents.h"

#include <limits>
#include <vector>

namespace tessera {

/// A unique reflection.
struct MergedGroup {
    double dfIntensity = 0;  ///< mean, weighted by 1 / sigma²
    /// 1 / sqrt(sum of the weights); with three observations or more, the standard error from their scatter
    /// if that is greater.
    double dfSigma = 0;
    int nObserved = 0;
    double dfDeviations = 0;   ///< sum |I - mean|
    double dfIntensities = 0;  ///< sum I
    double dfScatter = 0;  ///< variance of the mean from the scatter of the observations; 0 for a single one
};

/// Merges the corrected intensities of each group.
std::vector<MergedGroup> mergeGroups(const std::vector<Observation>& listObservation,
                                     const EquivalentGroups& groups);

/// Accumulates groups and computes the statistics of their agreement.
///
/// Rint (Rmerge) = Σ Σ |I - mean| / Σ Σ I; Rmeas has the factor sqrt(n / (n - 1)), and Rpim the factor
/// sqrt(1 / (n - 1)), before the deviations of each group of n observations. All are over groups of at least
/// two observations, with means weighted by 1 / sigma² as in SHELXL.
/// Sources: Diederichs & Karplus (1997), Nat. Struct. Biol. 4, 269–275; Weiss (2001), J. Appl. Cryst. 34,
/// 130–135.
///
/// CC1/2 is computed by the sigma-tau method, which gives the average over random half data sets:
/// (s² - e/2) / (s² + e/2), with the variance s² of the mean intensities and the mean e of the variances of
/// the mean of half a group. Means and scatter are weighted by 1 / sigma² like the merged intensities, so
/// that weak frames have little influence. Source: Assmann, Brehm & Diederichs (2016), J. Appl. Cryst. 49,
/// 1021–1028.
class CAgreement {
public:
    void add(const MergedGroup& group);  ///< adds a unique reflection

    int observedCount() const { return m_nObserved; }                       ///< observations
    int uniqueCount() const { return m_nUnique; }                           ///< unique reflections
    double rInt() const { return ratio(m_dfDeviations, m_dfIntensities); }  ///< not finite without pairs
    double rMeas() const { return ratio(m_dfMeas, m_dfIntensities); }       ///< not finite without pairs
    double rPim() const { return ratio(m_dfPim, m_dfIntensities); }         ///< not finite without pairs
    /// Not finite with fewer than three groups of at least two observations.
    double ccHalf() const;
    double meanIOverSigma() const { return ratio(m_dfIOverSigma, m_nUnique); }  ///< over unique reflections
    double multiplicity() const { return ratio(m_nObserved, m_nUnique); }  ///< observations per reflection

private:
    /// Not finite unless the denominator is positive.
    static double ratio(double dfAbove, double dfBelow)
    {
        return dfBelow > 0 ? dfAbove / dfBelow : std::numeric_limits<double>::quiet_NaN();
    }

    int m_nObserved = 0;
    int m_nUnique = 0;
    int m_nSeveral = 0;  ///< groups of at least two observations
    double m_dfDeviations = 0;
    double m_dfMeas = 0;
    double m_dfPim = 0;
    double m_dfIntensities = 0;
    double m_dfIOverSigma = 0;
    double m_dfMean = 0;     ///< running mean of the mean intensities (Welford's method)
    double m_dfSquares = 0;  ///< sum of the squared deviations from it
    double m_dfHalfVariance = 0;
};

}  // namespace tessera
