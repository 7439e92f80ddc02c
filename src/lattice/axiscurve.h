// CAxisCurve: the sharpness of the lattice as a function of the azimuth of the rotation axis.
#pragma once

#include "lattice/axissearch.h"
#include "lattice/directionsearch.h"

namespace tessera {

constexpr double g_dfAxisElsewhere = 20;  ///< degrees; maxima closer than this are the same one

/// Brings an azimuth into the range above −180 to 180 degrees.
double circleAzimuth(double dfAzimuth);

/// The difference of two azimuths, 0 to 180 degrees.
double azimuthsApart(double dfOne, double dfOther);

/// Takes every n-th peak, so that at most `nMost` are left.
std::vector<FlatPeak> thinnedPeaks(const std::vector<FlatPeak>& vecPeak, std::size_t nMost);

/// The curve, sampled first in even steps over the full circle and then closer at its maxima. Only a sample
/// of the peaks is used, which limits the time.
class CAxisCurve {
public:
    /// @param nJobs   threads
    /// @param fnGoOn  asked between azimuths whether to go on; must outlive the curve
    CAxisCurve(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry, int nJobs,
               const std::function<bool()>& fnGoOn);

    /// Samples the full circle in even steps, and more closely the highest maxima.
    /// @return false when fnGoOn has ended it
    bool trace();

    /// Samples further azimuths, degrees. Those that have been sampled already are skipped.
    /// @return false when fnGoOn has ended it
    bool add(const std::vector<double>& vecAzimuth);

    /// The samples in order of azimuth.
    const std::vector<AxisSharpness>& points() const { return m_vecPoint; }

    /// The local maxima, the highest first: samples that no sample within g_dfAxisElsewhere exceeds.
    std::vector<AxisSharpness> maxima() const;

    /// The sharpness at an azimuth that has been sampled.
    double sharpnessAt(double dfAzimuth) const;

    /// The contrast of a sharpness: 0 for the median of the curve, 1 for a perfect lattice.
    double contrastOf(double dfSharpness) const;

    /// The options with which rows of the lattice are searched.
    const DirectionSearchOptions& options() const { return m_options; }

private:
    bool holds(double dfAzimuth) const;

    std::vector<FlatPeak> m_vecPeak;
    FlatGeometry m_geometry;
    DirectionSearchOptions m_options;
    int m_nJobs;
    const std::function<bool()>& m_fnGoOn;
    std::vector<AxisSharpness> m_vecPoint;
    double m_dfUsual = 0;  ///< the median over the full circle
};

}  // namespace tessera
