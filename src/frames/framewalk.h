// CFrameWalk: the one walk over the frames of a series.
#pragma once

#include "frames/framesequence.h"
#include "frames/takeframe.h"
#include "records/progress.h"
#include "records/runoutcome.h"
#include "records/runreport.h"

#include <functional>
#include <optional>

namespace tessera {

/// Where a walk asks its report whether to go on.
enum class StopAsked {
    BeforeEachFrame,  ///< after the progress, the first frame included
    BetweenFrames,    ///< after each frame; after the last the work is done, and a no changes nothing
    AfterEachFrame,   ///< after the last as well, and a no there means that the run did not finish
};

/// Goes from frame to frame with progress, stop and exceptions in one place, by itself or with threads that
/// work ahead.
class CFrameWalk {
public:
    CFrameWalk(int nFrames, StopAsked stopAsked, CRunReport& report)
        : m_nFrames(nFrames), m_stopAsked(stopAsked), m_report(report)
    {}

    /// Shows "frame/frames" from here to the end of the walk.
    void showProgress(ProgressPlace place, int nMinimum = 0);
    /// Hides it before its time, where the walk does not begin.
    void endProgress() { m_progress.reset(); }

    /// Calls fnFrame for each frame in order, counted from 0, until it returns false.
    ///
    /// What fnFrame throws, such as a lack of memory, ends the walk with a red line.
    /// @return Finished, Stopped, or Failed with the report's reason where fnFrame returned false or threw
    RunOutcome run(const std::function<bool(int nFrame)>& fnFrame);

    /// The same with a result for each frame that up to nJobs threads make ahead of its turn
    /// (CFrameSequence). fnFrame is called by the calling thread and may take the result away. A lack of
    /// memory is told as by takeFrame().
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

    int frameCount() const { return m_nFrames; }
    /// Frames for which fnFrame returned true.
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
