// CompletenessForecast: how complete the data become when the crystal is turned further.
#pragma once

#include "integration/mergingquality.h"
#include "integration/scaling.h"
#include "integration/seriesgeometry.h"

#include <QString>

#include <array>
#include <vector>

namespace tessera {

struct CompletenessForecast {
    double dfNow = 0;          ///< 0 to 1, completeness of what was measured
    double dfGoal = 0;         ///< 0 to 1, that was asked for
    double dfMoreAtEnd = 0;    ///< degrees beyond the last frame for the goal; not finite: no turn reaches it
    double dfMoreAtStart = 0;  ///< degrees before the first frame, likewise
    double dfBest = 0;         ///< 0 to 1, of all further turns about this axis
    /// Degrees; completeness when turned on by so much beyond the last frame, and before the first one.
    std::vector<std::array<double, 3>> listCurve;
    QString strText;  ///< "12 more degrees after the last frame give 90%."
};

/// What further turning about the same axis would add: the unique reflections that have not been measured, by
/// the turn at which the first of their equivalents crosses the Ewald sphere, in closed form.
///
/// A reflection that crosses more slowly than the slowest of the measured ones is taken as one that will not
/// be measured. Turns reach up to 180 degrees on either side.
/// @param listMerged  what has been measured, in the setting of the symmetry
/// @param cell        of that setting
/// @param dfDMin      Å
/// @param dfLeastSpeed  Å⁻¹ per degree
CompletenessForecast forecastCompleteness(const std::vector<MergedReflection>& listMerged,
                                          const SeriesGeometry& series, const ObservationSymmetry& symmetry,
                                          const CellParameters& cell, double dfDMin, double dfLeastSpeed = 0,
                                          double dfGoal = 0.9);

}  // namespace tessera
