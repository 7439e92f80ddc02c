// Prediction: which reflections cross the Ewald sphere during a series, where and when.
#pragma once

#include "integration/observation.h"
#include "integration/rockingcurve.h"
#include "integration/seriesgeometry.h"

#include <QString>

#include <vector>

namespace tessera {

struct PredictionOptions {
    double dfMaxDStar = 0;          ///< Å⁻¹; 0, or further than that: as far as the frame's corner shows
    double dfMinDStar = 0;          ///< Å⁻¹
    double dfRockingWidth = 0.005;  ///< Å⁻¹, sigma of the rocking curve (without the turn of a frame)
    double dfMosaicity = 0;         ///< degrees, sigma
    double dfRockingReach = 3;      ///< widths on either side that are summed
    double dfMostFrames = 40;       ///< a passage over more frames than these is slow
    double dfDiscRadius = 4;        ///< pixels, of the disc that must lie on the frame
    char chCentring = 'P';          ///< of the cell in force: absent lattice points are not predicted
    bool bBeyondEnds = false;       ///< also those that cross outside the series and reach into it
};

class CPassageGeometry;

/// The rocking curve that the options tell.
RockingCurve rockingCurveOf(const PredictionOptions& options, const RotationMode& rotation);

/// Why a prediction would take more time and memory than there is; empty where it would not.
///
/// A cell of hundreds of Å and a resolution beyond that of any crystal have thousands of millions of points.
QString whyNotPredicted(const CPassageGeometry& passages, const PredictionOptions& options);

/// All passages, ordered by the frame of the passage, then by h, k, l.
///
/// The excitation error is the distance of the point from the sphere along its radius, Å⁻¹, found for the
/// middle of each frame's turn; several passages of one reflection are observations of their own. Flags:
/// slow, begins before, ends after, off the frame.
///
/// Slow are also those that turn back within the reach of the sphere, as their two passages are one. A
/// passage begins before the series or ends after it where more than a two-hundredth of its curve is lost.
std::vector<Observation> predictObservations(const SeriesGeometry& series, const PredictionOptions& options);

/// The same, of passages that are prepared.
/// @param nJobs  threads; the result is the same for every number
std::vector<Observation> predictObservations(const CPassageGeometry& passages,
                                             const PredictionOptions& options, int nJobs = 1);

}  // namespace tessera
