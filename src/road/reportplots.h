// The plots of a report.
#pragma once

#include "road/roadstate.h"
#include "road/svgplot.h"

namespace tessera {

/// Drift of the direct beam along x and y against the frame, pixels.
SvgPlot driftPlot(const SeriesData& series);
/// Number of peaks against the frame.
SvgPlot peaksPlot(const SeriesData& series);
/// Rms distance of the peaks from their expected places in the plane of the frame against the frame, pixels,
/// before and after the refinement of the geometry; empty without a refinement.
SvgPlot residualsPlot(const RoadState& state);
/// Rint and CC1/2 of the shells against 1/d.
SvgPlot agreementPlot(const IntegrationResult& result);
/// Completeness of the shells against 1/d.
SvgPlot completenessPlot(const IntegrationResult& result);
/// Scale factor against the frame.
SvgPlot scalePlot(const IntegrationResult& result);

}  // namespace tessera
