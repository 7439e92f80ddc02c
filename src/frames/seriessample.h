// forEachSampledFrame: reads some frames spread evenly over a series.
#pragma once

#include "dataset/seriessnapshot.h"
#include "frames/deferredreport.h"
#include "frames/framesource.h"
#include "frames/framewalk.h"
#include "frames/jobsformemory.h"
#include "imaging/imagelist.h"
#include "records/runreport.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tessera {

/// The numbers of at most nMost frames in order, including the first and the last frame.
std::vector<int> sampledFrames(int nFrames, int nMost);

/// The images of a frame, of which the first has pixels; empty, with the lines of the loader, when it
/// cannot be read.
/// @throw CShortMemory
ImageList sampledImages(const FrameSource& source, CRunReport& report);

/// Logs why frames could not be read, for the first few of them.
void sayUnreadFrames(const std::vector<CDeferredReport>& vecUnread, CRunReport& report);

/// The result of a frame, or why it could not be read.
template <class Result>
struct SampledFrame {
    std::optional<Result> result;
    CDeferredReport report;
};

/// Computes a result of the first image of some frames, nJobs of them side by side, and hands the results
/// over in order.
///
/// A frame that cannot be read or has no pixels is skipped without a line, as the run that needs it will
/// report it. If no frame can be read, red lines tell why.
/// @param vecFrame    numbers of the frames
/// @param fnMakeLook  returns the function of each thread, which makes a Result of an image and of its
///                    place in vecFrame
/// @param fnTake      called by the calling thread
/// @return false when the report asked to stop; false, with a red line, when memory is short
template <class Result>
bool forEachFrameOf(const std::vector<int>& vecFrame, const DataSet& dataSet, int nJobs, CRunReport& report,
                    const std::function<std::function<Result(const CImgObj<float>&, int)>()>& fnMakeLook,
                    const std::function<void(Result& result)>& fnTake)
{
    const SeriesSnapshot series(dataSet);
    const auto makeWorker = [&] {
        return [&, fnLook = fnMakeLook()](int i) {
            const QString& strFile = series.listFrameFile[vecFrame[i]];
            SampledFrame<Result> frame;
            const ImageList vecImage = sampledImages(frameSource(series, vecFrame[i]), frame.report);
            if (vecImage.empty()) {
                return frame;
            }
            const CImgObj<float>& img = *vecImage.front();
            try {
                frame.result = fnLook(img, i);
            } catch (const std::bad_alloc&) {
                const std::uint64_t nBytesPerPixel = 17;  // at most as much as the peak search
                throw CShortMemory(QStringLiteral("%1: a look at the frame").arg(strFile),
                                   nBytesPerPixel * std::uint64_t(img.Width()) * std::uint64_t(img.Height()));
            }
            return frame;
        };
    };
    // At most as much memory as the peak search. That run follows and will report that there are fewer
    // threads.
    const int nFit = jobsForMemory(series, nJobs, {17, 4}, nullptr);
    std::vector<CDeferredReport> vecUnread;
    CFrameWalk walk(int(vecFrame.size()), StopAsked::BeforeEachFrame, report);
    const RunOutcome outcome = walk.runAhead<SampledFrame<Result>>(nFit, makeWorker,
                                                                   [&](int, SampledFrame<Result>& frame) {
                                                                       if (frame.result) {
                                                                           fnTake(*frame.result);
                                                                       } else {
                                                                           vecUnread.push_back(frame.report);
                                                                       }
                                                                       return true;
                                                                   });
    if (outcome.end != RunEnd::Finished) {
        return false;
    }
    if (vecUnread.size() == vecFrame.size()) {
        sayUnreadFrames(vecUnread, report);
    }
    return true;
}

/// Does the same for at most nMost frames spread over the series, see sampledFrames().
template <class Result>
bool forEachSampledFrame(const DataSet& dataSet, int nMost, int nJobs, CRunReport& report,
                         const std::function<std::function<Result(const CImgObj<float>&)>()>& fnMakeLook,
                         const std::function<void(Result& result)>& fnTake)
{
    const auto makeLook = [&] {
        return [fnLook = fnMakeLook()](const CImgObj<float>& img, int) { return fnLook(img); };
    };
    return forEachFrameOf<Result>(sampledFrames(dataSet.m_listFrameFile.size(), nMost), dataSet, nJobs,
                                  report, makeLook, fnTake);
}

}  // namespace tessera
