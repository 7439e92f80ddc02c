// CFrameWalk: the loop over the frames of a series that all runs use.
#pragma once

#include "frames/framesequence.h"
#include "frames/takeframe.h"
#include "records/progress.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <functional>
#include <optional>

namespace tessera {

/// When a walk asks the report whether to go on.
enum class StopAsked {
    BeforeEachFrame,  ///< before each frame including the first, after the progress is shown
    BetweenFrames,    ///< after each frame except that a stop after the last one has no effect
    AfterEachFrame,   ///< after each frame; a stop after the last one means that the run did not finish
};

/// Goes through the frames, and handles progress, stop requests and exceptions. The work is done by the
/// calling thread or by threads that work ahead.
class CFrameWalk {
public:
    /// @param report  must outlive the walk
    CFrameWalk(int nFrames, StopAsked stopAsked, CRunReport& report)
        : m_nFrames(nFrames), m_stopAsked(stopAsked), m_report(report)
    {}

    /// Shows the progress as "frame/frames" until the end of the walk.
    void showProgress(ProgressPlace place, int nMinimum = 0);
    /// Hides the progress if the walk does not begin.
    void endProgress() { m_progress.reset(); }

    /// Calls fnFrame for each frame in order, counted from 0, until it returns false.
    ///
    /// An exception of fnFrame, such as for a lack of memory, ends the walk with a red line.
    /// @return Finished, Stopped, or Failed with the reason of the report where fnFrame returned false or
    ///         threw
    RunOutcome run(const std::function<bool(int nFrame)>& fnFrame);

    /// Does the same with a result for each frame, which up to nJobs threads compute in advance
    /// (CFrameSequence). fnFrame is called by the calling thread and may move the result. A lack of memory
    /// is reported as by takeFrame().
    template <class Result>
    RunOutcome runAhead(int nJobs,
                        const std::function<typename CFrameSequence<Result>::FnFrame()>& fnMakeWorker,
                        const std::function<bool(int nFrame, Result& result)>& fnFrame)
    {
        CFrameSequence<Result> sequence(m_nFrames, nJobs, fnMakeWorker);
        return run([&](int nFrame) {
            Result result;
            return takeFrame(sequence, nFrame, result, m_report) && fnFrame(nFrame, result);
        });
    }

    /// Number of frames.
    int frameCount() const { return m_nFrames; }
    /// Number of frames for which fnFrame returned true.
    int doneCount() const { return m_nDone; }

private:
    RunEnd walk(const std::function<bool(int nFrame)>& fnFrame);

    int m_nFrames;
    StopAsked m_stopAsked;
    CRunReport& m_report;
    std::optional<CProgress> m_progress;
    int m_nDone = 0;
};

}  // namespace tessera
