// Axis search: azimuth and sense of the rotation axis from the peaks alone, where nobody knows them.
#pragma once

#include "lattice/flatpeak.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace tessera {

/// One azimuth of the curve.
struct AxisSharpness {
    double dfAzimuth = 0;    ///< degrees, above −180 to 180, counter-clockwise on the screen from 3 o'clock
    double dfSharpness = 0;  ///< latticeSharpness() of the points, 0 to 1
};

struct AxisFound {
    AxisSharpness best;           ///< the azimuth refined against all peaks
    double dfAzimuthError = 0;    ///< degrees, standard error
    AxisSharpness second;         ///< the best at another place: as a rule the other sense, 180° away
    bool bSure = false;           ///< of the sense; the azimuth itself is certain in any case
    QString strSense;             ///< what the sense rests on, or why it is doubtful; no full stop
    double dfCurvature = 0;       ///< of the peaks in that of the Ewald sphere, 1 in the sense that was taken
    double dfCurvatureError = 0;  ///< standard error
    double dfShareFitting = 0;    ///< of the peaks on the lattice that the axis was refined with, 0 to 1
};

struct AxisSearch {
    std::vector<AxisSharpness> vecCurve;  ///< by azimuth, all round; empty where nothing could be tried
    std::optional<AxisFound> found;
    QString strReason;  ///< why none was found; no full stop
};

/// Finds the axis by the sharpness of the lattice that the peaks make for each azimuth all round: every 6
/// degrees, closer at the highest places, and there by least squares together with the lattice.
///
/// The sense shows in the curvature of the Ewald sphere alone, as without it the opposite sense gives the
/// inverted lattice. The fit leaves the curvature free: about 1 for the sense that the peaks were mapped
/// with, −1 for the opposite one. It is sure when the fit tells these apart by far and the sharpness agrees.
///
/// None is found, with the reason, for fewer than fifty peaks, for tilts that stand still, and where no
/// azimuth stands out or makes most peaks fit a lattice. The time is bounded, as a sample of the peaks does.
/// @param vecPeak  of all frames, in any order that stays the same
/// @param nJobs    threads; the result is the same for every number
/// @param fnGoOn   asked now and then, in the calling thread
/// @return none when it was ended
/// Source of the sums: Steller, Bolotovsky & Rossmann (1997), J. Appl. Cryst. 30, 1036–1040.
std::optional<AxisSearch> searchAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                                     int nJobs = 1, const std::function<bool()>& fnGoOn = {});

/// The sharpness of the lattice at one azimuth, degrees, as searchAxis() has it in its curve.
/// @return 0 where the peaks or the geometry leave nothing to try
double axisSharpness(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry, double dfAzimuth);

/// The peaks away from the direct beam and within what crystals scatter to: those that searchAxis() takes.
std::vector<FlatPeak> usablePeaks(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry);

}  // namespace tessera
