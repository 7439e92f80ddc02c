// The plots of a report, as records.
#pragma once

#include "road/roadstate.h"
#include "road/svgplot.h"

namespace tessera {

/// Drift of the direct beam along x and y by frame, in pixels.
SvgPlot driftPlot(const SeriesData& series);
/// Peaks that were found on each frame.
SvgPlot peaksPlot(const SeriesData& series);
/// Rms distance of the peaks of each frame from their reflections in the plane of the frame, in pixels, with
/// the geometry before its refinement and after; empty without one.
SvgPlot residualsPlot(const RoadState& state);
/// Rint and CC1/2 by the middle of each shell in 1/d.
SvgPlot agreementPlot(const IntegrationResult& result);
/// Completeness by 1/d.
SvgPlot completenessPlot(const IntegrationResult& result);
/// The factor that each frame was multiplied by.
SvgPlot scalePlot(const IntegrationResult& result);

}  // namespace tessera
