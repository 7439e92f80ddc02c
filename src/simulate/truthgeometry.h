// Truth of the geometry: the part of the truth file about lenses, the pattern's offsets and what was told.
#pragma once

#include "simulate/simulatedseries.h"

#include <QJsonObject>

namespace tessera {

/// Adds the axis and the stretching, and, only where the series has them: "ellipse" (amplitude, azimuth),
/// "thirdOrder" (radial, spiral, radius) in the senses of LensDistortion, "patternOffsets" (pixels, one pair
/// per frame) and "told", what the project says where that is not the truth.
void writeTrueGeometry(const SimulatedSeries& series, QJsonObject& root);

/// Reads it.
/// @param nFrames  of the series
/// @return false where it is damaged; the series is then of no use
bool readTrueGeometry(const QJsonObject& root, int nFrames, SimulatedSeries& series);

}  // namespace tessera
