// CAxisCurve: the sharpness of the lattice over the azimuth of the rotation axis.
#pragma once

#include "lattice/axissearch.h"
#include "lattice/directionsearch.h"

namespace tessera {

constexpr double g_dfAxisElsewhere = 20;  ///< degrees: farther away is another maximum

/// An azimuth above −180 to 180 degrees.
double circleAzimuth(double dfAzimuth);

/// How far two azimuths lie apart, degrees, 0 to 180.
double azimuthsApart(double dfOne, double dfOther);

/// Every n-th of the peaks, so that at most so many are left.
std::vector<FlatPeak> thinnedPeaks(const std::vector<FlatPeak>& vecPeak, std::size_t nMost);

/// The curve as it grows: first all round, then where it is high. A sample of the peaks bounds its time.
class CAxisCurve {
public:
    /// @param fnGoOn  asked between azimuths; must outlive the curve
    CAxisCurve(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry, int nJobs,
               const std::function<bool()>& fnGoOn);

    /// All round in even steps, and closer at the highest places.
    /// @return false when it was ended
    bool trace();

    /// Adds azimuths, degrees, unless they are there.
    /// @return false when it was ended
    bool add(const std::vector<double>& vecAzimuth);

    /// By azimuth.
    const std::vector<AxisSharpness>& points() const { return m_vecPoint; }

    /// The places that no other one within g_dfAxisElsewhere stands above, the highest first.
    std::vector<AxisSharpness> maxima() const;

    /// The sharpness at an azimuth that was added.
    double sharpnessAt(double dfAzimuth) const;

    /// How far a sharpness stands above that of the usual azimuth, on the way to a perfect lattice: 0 to 1.
    double contrastOf(double dfSharpness) const;

    /// What the rows were looked for with.
    const DirectionSearchOptions& options() const { return m_options; }

private:
    bool holds(double dfAzimuth) const;

    std::vector<FlatPeak> m_vecPeak;
    FlatGeometry m_geometry;
    DirectionSearchOptions m_options;
    int m_nJobs;
    const std::function<bool()>& m_fnGoOn;
    std::vector<AxisSharpness> m_vecPoint;
    double m_dfUsual = 0;  ///< sharpness: the median all round
};

}  // namespace tessera
