// jobsForMemory: how many frames can be worked on side by side in the memory that is there.
#pragma once

#include "dataset/seriessnapshot.h"
#include "records/runreport.h"

#include <cstdint>

namespace tessera {

/// What a run takes for a frame, in bytes per pixel.
struct FrameMemory {
    double dfEach = 4;    ///< in each thread
    double dfShared = 0;  ///< for all threads together
};

/// How many jobs of nEach bytes there is room for beside nShared bytes: from 1 to nJobs, as one thread will
/// try in any case, and tells what was missing.
int jobsThatFit(int nJobs, std::uint64_t nShared, std::uint64_t nEach, std::uint64_t nAvailable);

/// The same for the frames of a series, by the size of the first one and what can be had now: of the machine,
/// of the control group, within the limits of the process. Where the size is not told, nJobs.
/// @param pReport  takes a line where there are fewer than asked for; null: nothing is said
int jobsForMemory(const SeriesSnapshot& series, int nJobs, FrameMemory memory, CRunReport* pReport);

}  // namespace tessera
