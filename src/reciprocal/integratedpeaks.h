// IntegratedPeaks: integrated intensities as the peak table looks them up.
#pragma once

#include <QString>

#include <array>
#include <map>

namespace tessera {

/// A reflection as one passage through the Ewald sphere gave it.
struct IntegratedPeak {
    double dfFrame = 0;      ///< of the passage, from 0
    double dfIntensity = 0;  ///< on the common scale
    double dfSigma = 0;      ///< 0: not measured
    QString strFlags;        ///< what is wrong with it, in words; empty: nothing
    int nObservation = 0;    ///< place in the list of the series
};

/// All passages by h, k, l of the cell in force.
class CIntegratedPeaks {
public:
    /// Adds a passage; a reflection may have several.
    void add(const std::array<int, 3>& anIndex, const IntegratedPeak& peak) { m_map.emplace(anIndex, peak); }

    /// The passage of a reflection that is nearest to a frame; null where there is none.
    const IntegratedPeak* nearest(const std::array<int, 3>& anIndex, double dfFrame) const;

private:
    std::multimap<std::array<int, 3>, IntegratedPeak> m_map;
};

}  // namespace tessera
