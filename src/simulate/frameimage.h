// renderFrame: the counts of one simulated frame, noise included.
#pragma once

#include "simulate/simulatedseries.h"

#include <vector>

namespace tessera {

/// nSize x nSize counts, row by row from the top. The same series and frame give the same image,
/// in whatever order frames are asked for.
std::vector<float> renderFrame(const SimulatedSeries& series, int nFrame);

/// The same before noise, saturation and hot pixels.
std::vector<double> expectedFrame(const SimulatedSeries& series, int nFrame);

}  // namespace tessera
