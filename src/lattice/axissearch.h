// Axis search: finds azimuth and sense of the rotation axis from the peaks alone.
#pragma once

#include "lattice/flatpeak.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace tessera {

/// One sample of the curve.
struct AxisSharpness {
    double dfAzimuth = 0;    ///< degrees, above −180 to 180, counter-clockwise on the screen from 3 o'clock
    double dfSharpness = 0;  ///< latticeSharpness() of the mapped peaks, 0 to 1
};

/// The axis that searchAxis() has found.
struct AxisFound {
    AxisSharpness best;           ///< refined against all peaks
    double dfAzimuthError = 0;    ///< degrees, standard error
    AxisSharpness second;         ///< the best other maximum; usually the opposite sense, 180° away
    bool bSure = false;           ///< whether the sense is certain; the azimuth always is
    QString strSense;             ///< why the sense is certain or doubtful, in words without a full stop
    double dfCurvature = 0;       ///< see AxisFit; about 1 in the right sense
    double dfCurvatureError = 0;  ///< standard error
    double dfShareFitting = 0;    ///< share of the peaks that fit the refined lattice, 0 to 1
};

/// What searchAxis() has done, whether it has found an axis or not.
struct AxisSearch {
    std::vector<AxisSharpness> vecCurve;  ///< samples by azimuth; empty where nothing could be tried
    std::optional<AxisFound> found;       ///< the axis, if one was found
    QString strReason;                    ///< why no axis was found, in words without a full stop
};

/// Finds the rotation axis. The sharpness of the lattice of the mapped peaks is computed for azimuths over
/// the full circle, every 6 degrees and more closely at the maxima. Then the axis is refined together with
/// the lattice.
///
/// Only the curvature of the Ewald sphere tells the sense, as in its absence the opposite sense gives the
/// inverted lattice. The curvature is refined freely. It comes out as about 1 if the peaks were mapped in
/// the right sense, and as −1 in the opposite one. The sense is certain when its error is small against
/// this difference and the sharpness agrees.
///
/// No axis is found, and the reason given, for fewer than fifty peaks, for tilts that do not change, and
/// where no azimuth stands out or none makes most peaks fit a lattice. The time is limited by using a
/// sample of the peaks.
/// @param vecPeak  peaks of all frames; their order must be the same for the same result
/// @param nJobs    threads; the result does not depend on it
/// @param fnGoOn   asked now and then, in the calling thread, whether to go on
/// @return nothing when fnGoOn has ended the search
/// Source of the sums: Steller, Bolotovsky & Rossmann (1997), J. Appl. Cryst. 30, 1036–1040.
std::optional<AxisSearch> searchAxis(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry,
                                     int nJobs = 1, const std::function<bool()>& fnGoOn = {});

/// The sharpness of the lattice at one azimuth, degrees, as in the curve of searchAxis().
/// @return 0 where there are too few peaks or the geometry is unusable
double axisSharpness(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry, double dfAzimuth);

/// The peaks that searchAxis() uses: those outside the direct beam and within the resolution that crystals
/// scatter to.
std::vector<FlatPeak> usablePeaks(const std::vector<FlatPeak>& vecPeak, const FlatGeometry& geometry);

}  // namespace tessera
