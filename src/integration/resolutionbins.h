// Resolution bins: reflections cut into shells with about the same number of them.
#pragma once

#include <vector>

namespace tessera {

/// Mean intensity by resolution, for normalized intensities E² = I / mean.
class CResolutionMean {
public:
    /// Shells of about so many reflections, at least one; between the middles of the shells the mean is drawn
    /// straight in its logarithm. Shells without a positive mean take that of their neighbour.
    /// @param listDStar      Å⁻¹
    /// @param listIntensity  as many
    CResolutionMean(const std::vector<double>& listDStar, const std::vector<double>& listIntensity,
                    int nInShell = 100);

    /// Above 0; 1 where nothing is known.
    double mean(double dfDStar) const;

private:
    std::vector<double> m_listPlace;      ///< d*², Å⁻²
    std::vector<double> m_listLogarithm;  ///< of the mean there
};

}  // namespace tessera
