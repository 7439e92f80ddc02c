// Resolution bins: the mean intensity in shells with about equal numbers of reflections.
#pragma once

#include <vector>

namespace tessera {

/// The mean intensity as a function of resolution, for normalized intensities E² = I / mean.
class CResolutionMean {
public:
    /// The logarithm of the mean is interpolated linearly between the middles of the shells. A shell without
    /// a positive mean has that of its neighbour.
    /// @param listDStar      Å⁻¹
    /// @param listIntensity  of the same length
    /// @param nInShell       approximate number of reflections in a shell
    CResolutionMean(const std::vector<double>& listDStar, const std::vector<double>& listIntensity,
                    int nInShell = 100);

    /// The mean at a d* (Å⁻¹), above 0; 1 if there are no data.
    double mean(double dfDStar) const;

private:
    std::vector<double> m_listPlace;      ///< d*² of the middles of the shells, Å⁻²
    std::vector<double> m_listLogarithm;  ///< logarithms of the means
};

}  // namespace tessera
