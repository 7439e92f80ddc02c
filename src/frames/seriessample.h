// sampleFrameIndices: a few frames spread evenly over a series.
#pragma once

#include <vector>

/// At most nMost indices of nFrames frames, ascending, the first and the last among them.
std::vector<int> sampleFrameIndices(int nFrames, int nMost);
