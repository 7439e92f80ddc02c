#include "frames/jobsformemory.h"

#include "imagefiles/frameformats.h"
#include "records/availablememory.h"

#include <algorithm>

namespace tessera {

namespace {

const std::uint64_t g_nMegabyte = std::uint64_t(1) << 20;
// Stack and heap of a thread, and its buffers for reading files.
const std::uint64_t g_nOfThread = 16 * g_nMegabyte;
// Less than this is not checked.
const std::uint64_t g_nAlwaysThere = 64 * g_nMegabyte;
// Memory that stays free: of the machine for other programs, within the limits of the process for the lists
// of the run.
const std::uint64_t g_nForOthers = 256 * g_nMegabyte, g_nForRun = 32 * g_nMegabyte;

std::uint64_t lessRest(std::uint64_t nBytes, std::uint64_t nRest)
{
    return nBytes - std::min(nBytes, nRest);
}

}  // namespace

int jobsThatFit(int nJobs, std::uint64_t nShared, std::uint64_t nEach, std::uint64_t nAvailable)
{
    const std::uint64_t nFit = lessRest(nAvailable, nShared) / std::max<std::uint64_t>(1, nEach);
    return int(std::clamp<std::uint64_t>(nFit, 1, std::uint64_t(std::max(1, nJobs))));
}

int jobsForMemory(const SeriesSnapshot& series, int nJobs, FrameMemory memory, CRunReport* pReport)
{
    nJobs = std::max(1, std::min(nJobs, series.frameCount()));
    if (nJobs == 1) {
        return nJobs;
    }
    const QSize size = frameHeader(series.listFrameFile.first()).size;
    if (size.isEmpty()) {
        return nJobs;
    }
    const double dfPixels = double(size.width()) * size.height();
    const std::uint64_t nEach = g_nOfThread + std::uint64_t(memory.dfEach * dfPixels);
    const std::uint64_t nShared = std::uint64_t(memory.dfShared * dfPixels);
    if (nShared + nEach * std::uint64_t(nJobs) <= g_nAlwaysThere) {
        return nJobs;
    }
    const std::uint64_t nAvailable = std::min(lessRest(availableMemory(), g_nForOthers),
                                              lessRest(memoryLeftByLimits(), g_nForRun));
    const int nFit = jobsThatFit(nJobs, nShared, nEach, nAvailable);
    if (nFit < nJobs && pReport) {
        pReport->addMessage(
            QStringLiteral(
                "Of %L1 frames in parallel there is memory for %L2: one takes about %L3 MB, and %L4 MB are "
                "available. The run continues with %L2 (as with the driver's option --jobs %2).")
                .arg(nJobs)
                .arg(nFit)
                .arg((nShared + nEach) / g_nMegabyte)
                .arg(nAvailable / g_nMegabyte),
            Severity::Info);
    }
    return nFit;
}

}  // namespace tessera
