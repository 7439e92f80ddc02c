// CompletenessForecast: the completeness that a longer rotation of the crystal would give.
#pragma once

#include "integration/mergingquality.h"
#include "integration/scaling.h"
#include "integration/seriesgeometry.h"

#include <QString>

#include <array>
#include <vector>

namespace tessera {

/// The result of forecastCompleteness().
struct CompletenessForecast {
    double dfNow = 0;        ///< present completeness, 0 to 1
    double dfGoal = 0;       ///< completeness that is aimed at, 0 to 1
    double dfMoreAtEnd = 0;  ///< degrees to add after the last frame; not finite if the goal is out of reach
    double dfMoreAtStart = 0;  ///< degrees to add before the first frame, likewise
    double dfBest = 0;         ///< greatest completeness that rotation about this axis can give, 0 to 1
    /// One entry per whole degree from 0 to 180: {degrees, completeness with so many degrees added after the
    /// last frame, the same before the first frame}.
    std::vector<std::array<double, 3>> listCurve;
    QString strText;  ///< "12 more degrees after the last frame give 90%."
};

/// Computes the completeness that further rotation about the same axis would give. For each unique reflection
/// that has not been measured, the rotation at which the first of its equivalents crosses the Ewald sphere is
/// found in closed form.
///
/// Crossings at less than a minimum speed do not count as measured. Rotations of up to 180 degrees on either
/// side are considered: within them one of each pair of Friedel mates crosses if it ever does. Without tilts
/// or possible reflections the completeness is NaN, the rotations are infinite, and curve and text are empty.
/// @param listMerged    measured reflections, in the setting of the symmetry, as representatives of their
///                      equivalents
/// @param cell          cell in that setting
/// @param dfDMin        resolution limit, Å
/// @param dfLeastSpeed  speed of the slowest measured crossing, Å⁻¹ per degree
/// @param dfGoal        completeness that is aimed at, 0 to 1
CompletenessForecast forecastCompleteness(const std::vector<MergedReflection>& listMerged,
                                          const SeriesGeometry& series, const ObservationSymmetry& symmetry,
                                          const CellParameters& cell, double dfDMin, double dfLeastSpeed = 0,
                                          double dfGoal = 0.9);

}  // namespace tessera
