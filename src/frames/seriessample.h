// forEachSampledFrame: a look at a few frames spread evenly over a series.
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

/// Numbers of at most nMost frames in order, the first and the last frame among them.
std::vector<int> sampledFrames(int nFrames, int nMost);

/// The images of a sampled frame, the first of them with pixels; none, with the loader's words, when it
/// cannot be read.
/// @throw CShortMemory
ImageList sampledImages(const FrameSource& source, CRunReport& report);

/// Says why frames could not be read, of the first few of them.
void sayUnreadFrames(const std::vector<CDeferredReport>& vecUnread, CRunReport& report);

/// What was seen of a sampled frame, or why it could not be read.
template <class Result>
struct SampledFrame {
    std::optional<Result> result;
    CDeferredReport report;
};

/// Looks at the first image of some frames, nJobs of them side by side, and hands over what was seen in
/// order.
///
/// A frame that cannot be read or has no pixels is passed over without a word, as the run that needs it
/// tells; where none can be read, red lines say why.
/// @param vecFrame    numbers of the frames
/// @param fnMakeLook  gives each thread its function, which makes a Result of an image and of its place in
///                    vecFrame
/// @param fnTake      called by the caller's thread
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
                const std::uint64_t nBytesPerPixel = 17;  // as much as hunting takes, or less
                throw CShortMemory(QStringLiteral("%1: a look at the frame").arg(strFile),
                                   nBytesPerPixel * std::uint64_t(img.Width()) * std::uint64_t(img.Height()));
            }
            return frame;
        };
    };
    // As much as hunting takes, or less; whoever looks has a run after it, which says that there are fewer.
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

/// The same for at most nMost frames spread over the series, as by sampledFrames().
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
