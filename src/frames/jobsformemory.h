// jobsForMemory: how many frames can be processed side by side in the available memory.
#pragma once

#include "dataset/seriessnapshot.h"
#include "records/runreport.h"

#include <cstdint>

namespace tessera {

/// The memory that a run needs for a frame, in bytes per pixel.
struct FrameMemory {
    double dfEach = 4;    ///< for each thread
    double dfShared = 0;  ///< for all threads together
};

/// How many jobs of nEach bytes fit into the available memory beside nShared bytes: from 1 to nJobs. One
/// job is always tried, and reports if memory is short.
int jobsThatFit(int nJobs, std::uint64_t nShared, std::uint64_t nEach, std::uint64_t nAvailable);

/// Does the same for the frames of a series, from the size of the first one and the memory that the
/// machine, the control group and the limits of the process leave. nJobs where the size is unknown.
/// @param pReport  may be null; takes a line where there are fewer jobs than wanted
int jobsForMemory(const SeriesSnapshot& series, int nJobs, FrameMemory memory, CRunReport* pReport);

}  // namespace tessera
