// CHistogram: how the values of an image are distributed.
#pragma once

#include <vector>

namespace tessera {

/// Counts samples in bins of equal width between their smallest and their largest value.
class CHistogram {
public:
    /// Counts n samples in nBins bins. Samples that are not finite are left out.
    /// @return 1; 0, with the histogram as it was, for n < 1, nBins < 1, a null buffer or no finite sample
    int Fill(const float* pData, int n, int nBins);

    /// The value below which all but the fraction dfP of the samples lie: the upper edge of the bin
    /// where the sum from the lowest bin first exceeds 1 − dfP (one bin beyond the last if it never does).
    double Upper(double dfP) const;
    /// The value above which all but the fraction dfP of the samples lie: the upper edge of the bin
    /// where the sum from the highest bin first exceeds 1 − dfP (the smallest sample if it never does).
    double Lower(double dfP) const;

    /// How many pixels each bin has, the lowest one first.
    const std::vector<int>& Bins() const { return m_vecBin; }

private:
    int m_nBins = 0;
    std::vector<int> m_vecBin;
    double m_dfMin = 0.0;
    double m_dfMax = 0.0;
    int m_nTotal = 0;  // finite samples
};

}  // namespace tessera
