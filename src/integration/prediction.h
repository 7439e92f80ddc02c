// Prediction: which reflections cross the Ewald sphere during a series, where and when.
#pragma once

#include "integration/observation.h"
#include "integration/rockingcurve.h"
#include "integration/seriesgeometry.h"

#include <QString>

#include <vector>

namespace tessera {

/// What is predicted.
struct PredictionOptions {
    double dfMaxDStar = 0;          ///< Å⁻¹, at most up to the corner of the frame; 0: up to the corner
    double dfMinDStar = 0;          ///< Å⁻¹
    double dfRockingWidth = 0.005;  ///< sigma of the rocking curve without the rotation of a frame, Å⁻¹
    double dfMosaicity = 0;         ///< sigma, degrees
    double dfRockingReach = 3;      ///< widths of the rocking curve on either side that are summed
    double dfMostFrames = 40;       ///< a passage over more frames is flagged as slow
    double dfDiscRadius = 4;        ///< radius of the disc that must be on the frame, pixels
    char chCentring = 'P';          ///< centring of the cell in force; absent reflections are not predicted
    bool bBeyondEnds = false;       ///< include reflections that cross outside the series but reach into it
};

class CPassageGeometry;

/// The rocking curve of the options.
RockingCurve rockingCurveOf(const PredictionOptions& options, const RotationMode& rotation);

/// The reason why a prediction would exceed time and memory; empty if it would not. A cell of hundreds of Å
/// at a resolution beyond that of any crystal has thousands of millions of lattice points.
QString whyNotPredicted(const CPassageGeometry& passages, const PredictionOptions& options);

/// Predicts all passages, sorted by the frame of the passage, then by h, k, l.
///
/// Several passages of one reflection are separate observations. The flags "slow", "begins before", "ends
/// after" and "off the frame" are set. A reflection that turns back within the width of the Ewald sphere is
/// flagged as slow, too, since its two passages overlap. A passage begins before the series or ends after it
/// if more than 1/200 of its rocking curve is not recorded.
std::vector<Observation> predictObservations(const SeriesGeometry& series, const PredictionOptions& options);
/// The same with the passages at hand.
/// @param nJobs  threads; the result is the same for every number
std::vector<Observation> predictObservations(const CPassageGeometry& passages,
                                             const PredictionOptions& options, int nJobs = 1);

}  // namespace tessera
