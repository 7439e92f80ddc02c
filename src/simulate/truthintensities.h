// The part of the truth file that intensities are judged by.
#pragma once

#include "simulate/simulatedseries.h"

#include <QByteArray>
#include <QJsonObject>

namespace tessera {

/// Puts the exposure into the object: "rotationMode" with its kind and "precessionAngle" in degrees,
/// "tiltStep", "gain", "readNoise", "rocking" (Å⁻¹) and "mosaicity" (degrees), "scales" and "decays" (Å²) by
/// frame, the "blankFrames" from 0, and the names of the columns of the rows below.
void writeTrueExposure(const SimulatedSeries& series, QJsonObject& root);

/// The rows of "reflections" and "crossings", each with its key and ready to stand in the object. A
/// reflection has its indices on the true cell, the true |F|² in Å², and the area of its rocking curve
/// relative to one without mosaic spread: frames show |F|² as the height of the curve, so what is summed over
/// a passage goes by the product.
QByteArray trueIntensityRows(const SimulatedSeries& series);

/// Reads both; a file without them leaves scales of 1 and empty lists.
/// @return false where they are there and cannot be read
bool readTrueIntensities(const QJsonObject& root, int nFrames, SimulatedSeries& series);

}  // namespace tessera
